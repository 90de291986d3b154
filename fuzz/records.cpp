// Raw records through every function of numbers: what comes back is a number or a documented
// refusal, exact results are exact, order and signs are kept.
#include "support.h"

using namespace fuzz;

namespace {

constexpr size_t offset = 1 + sizeof(sword);

// The results of two calls, whose operands differ in sign.
enum class Law { none, odd, even };

Law law_of(const std::string &name) {
    static const std::set<std::string> odd = {"Neg",    "Shift",  "Trunc",  "Sin", "Tan", "ArcSin",
                                              "ArcTan", "HypSin", "HypTan", "Mul", "Div", "Mod"};
    static const std::set<std::string> even = {"Abs", "Cos", "HypCos", "IsZero", "IsInt"};
    return odd.contains(name) ? Law::odd : even.contains(name) ? Law::even : Law::none;
}

const std::set<std::string> rising = {"Exp",  "Ln",   "ArcSin", "ArcTan", "HypSin", "HypTan",
                                      "Sqrt", "Ceil", "Floor",  "Trunc",  "Shift",  "Cmp"};

// The exact result rounded once, of functions that have one; no bytes for the others.
Bytes exact_result(const std::string &name, const Decimal &a, const Decimal &b, sword count) {
    if (name == "Add") return a.plus(b).bytes();
    if (name == "Sub") return a.plus(b.negated()).bytes();
    if (name == "Mul") return a.times(b).bytes();
    if (name == "Mod" && b.sign() != 0) return a.remainder(b).bytes();
    if (name == "Neg") return a.negated().bytes();
    if (name == "Abs") return a.magnitude().bytes();
    if (count < -400 || count > 400) return {};
    if (name == "Shift") return a.shifted(count).bytes();
    if (name == "Trunc") return a.truncated(-count).bytes();
    return {};
}

class Case {
public:
    Case(const Function &f, sword count) : f_(f), count_(count) {
        documented_ = {22060};
        if (&f == &function("IsInt")) documented_.insert(0);
        if (&f >= &function("Add")) documented_.insert(602);
        if (f.name == "Div" || f.name == "Mod") documented_.insert(22056);
    }

    // The result's bytes, none for a refusal. An integer's sign stands in them.
    Bytes run(OCINumber a, OCINumber b) const {
        const OCINumber a_before = a, b_before = b;
        alignas(8) OCINumber result = number({});
        OCINumber &written = f_.result == 0 ? a : result;
        const Outcome outcome = watched(fuzz::bytes_of(written), documented_, [&](OCIError *err) {
            return f_.call(err, &a, &b, count_, &result);
        });
        REQUIRE(f_.result == 0 || a == a_before);
        REQUIRE(b == b_before);
        check_result_in_place(a_before, b_before, outcome, written);
        if (outcome.status != OCI_SUCCESS) return {};
        if (!f_.gives_number) {
            sword integer = 0;
            std::memcpy(&integer, &result, f_.name.starts_with("Is") ? sizeof(boolean) : 4);
            return {(integer > 0) - (integer < 0)};
        }
        const bool takes_both = f_.numbers == 2;
        if (is_well_formed(a_before) && (!takes_both || is_well_formed(b))) {
            REQUIRE(is_well_formed(written));
        }
        if (is_normal(a_before) && (!takes_both || is_normal(b))) REQUIRE(is_normal(written));
        return value_bytes(written);
    }

private:
    // The result may be an operand.
    void check_result_in_place(const OCINumber &a, const OCINumber &b, const Outcome &outcome,
                               const OCINumber &result) const {
        if (!f_.gives_number || f_.result == 0) return;
        for (int place = 0; place < f_.numbers; ++place) {
            OCINumber operands[] = {a, b};
            ErrorHandle err;
            REQUIRE(f_.call(err, &operands[0], &operands[1], count_, &operands[place]) ==
                    outcome.status);
            REQUIRE(outcome.status == OCI_SUCCESS
                        ? value_bytes(operands[place]) == value_bytes(result)
                        : operands[0] == a && operands[1] == b);
        }
    }

    const Function &f_;
    sword count_;
    std::set<int> documented_;
};

Bytes negated(const Bytes &bytes, bool is_number) {
    if (!is_number) return {-bytes[0]};
    if (is_infinite(bytes)) return bytes[0] == 1 ? Bytes{2, 255, 101} : Bytes{1, 0};
    return bytes[0] == 1 ? bytes : Decimal::of(bytes).negated().bytes();
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed) {
    return mutate(data, size, std::min(max_size, offset + 2 * sizeof(OCINumber)), seed, offset, 2);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const Function &f = functions[source.take<ub1>() % std::size(functions)];
    const auto count = source.take<sword>();
    const auto a = source.take<OCINumber>(), b = source.take<OCINumber>();
    const Case calls(f, count);
    const Bytes result = calls.run(a, b);

    // What follows is about values.
    const bool takes_both = f.numbers == 2;
    if (!is_normal(a) || !is_finite(a)) return 0;
    const bool is_b_good = is_normal(b) && is_finite(b);
    if (takes_both && !is_b_good) return 0;
    const Decimal exact_a = exact(a), exact_b = is_b_good ? exact(b) : Decimal("0", 0);

    if (f.name == "Cmp") REQUIRE(result == Bytes{compare(exact_a, exact_b)});
    if (f.name == "Sign") REQUIRE(result == Bytes{exact_a.sign()});
    const Bytes expected = exact_result(f.name, exact_a, exact_b, count);
    if (!expected.empty()) REQUIRE(result == expected);
    if (f.name == "Add" && !is_infinite(result) &&
        compare(exact(number(result)), exact_a.plus(exact_b)) == 0) {
        REQUIRE(Case(function("Sub"), 0).run(number(result), b) == value_bytes(a));
    }
    if (f.name == "Add" || f.name == "Mul") REQUIRE(calls.run(b, a) == result);

    const OCINumber minus_a = number(exact_a.negated().bytes());
    const OCINumber minus_b = number(exact_b.negated().bytes());
    const Law law = law_of(f.name);
    if (law != Law::none) {
        const Bytes mirror = calls.run(minus_a, b);
        REQUIRE(mirror.empty() == result.empty());
        if (!result.empty()) {
            REQUIRE(mirror == (law == Law::odd ? negated(result, f.gives_number) : result));
        }
    }
    if (f.name == "Add" || f.name == "Sub") {
        REQUIRE(calls.run(minus_a, minus_b) == negated(result, true));
    }
    if (f.name == "Ceil") {
        REQUIRE(Case(function("Floor"), 0).run(minus_a, b) == negated(result, true));
    }

    if (!rising.contains(f.name) || !is_b_good || takes_both || result.empty()) return 0;
    const Bytes other = calls.run(b, b);
    if (other.empty()) return 0;
    sword order = 0;
    ErrorHandle err;
    const OCINumber of_a = number(result), of_b = number(other);
    REQUIRE(OCINumberCmp(err, &of_a, &of_b, &order) == OCI_SUCCESS);
    const int expected_order = compare(exact_a, exact_b);
    REQUIRE(expected_order == 0 ? order == 0 : order * expected_order >= 0);
    return 0;
}
