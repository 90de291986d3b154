// A program moved over from plain doubles. The calculation is written once, for any type of
// amounts; what had to change is what stands apart for the two types: how text becomes an amount
// and how an amount is rounded to cents. Both run here, side by side.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <oci_number.hpp>
#include <string>

namespace {

// Before.
double cents(double x) { return std::round(x * 100) / 100; }
std::string text(double x) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.17g", x);
    return buffer;
}
std::string money(double x) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.2f", x);
    return buffer;
}

// After.
oci::number cents(const oci::number &x) { return round(x, 2); }
std::string text(const oci::number &x) { return to_string(x); }
std::string money(const oci::number &x) { return to_fixed(x, 2); }

template <class Amount>
Amount amount(const char *text) {
    if constexpr (std::is_same_v<Amount, double>) {
        return std::strtod(text, nullptr);
    } else {
        return Amount(text);
    }
}

template <class Amount>
Amount deposits() {
    Amount sum = 0;
    for (int i = 0; i < 10000; ++i) sum += amount<Amount>("0.1");
    return sum;
}

// A loan of 235000 at 3 % a year, paid back within 30 years.
template <class Amount>
class Loan {
public:
    void next_month() {
        const Amount due = cents(balance_ * amount<Amount>("0.0025"));
        interest_ += due;
        last_payment_ = balance_ + due < payment_ ? balance_ + due : payment_;
        balance_ = cents(balance_ + due - last_payment_);
    }
    std::string balance() const { return money(balance_); }
    std::string interest() const { return money(interest_); }
    std::string last_payment() const { return money(last_payment_); }

private:
    Amount balance_ = amount<Amount>("235000");
    Amount payment_ = amount<Amount>("990.77");
    Amount interest_ = 0, last_payment_ = 0;
};

void show(const char *what, const std::string &before, const std::string &after) {
    std::printf("%-28s %-20s %-12s%s\n", what, before.c_str(), after.c_str(),
                before == after ? "" : " differs");
}

}  // namespace

int main() {
    using oci::number;
    std::printf("%-28s %-20s %s\n", "", "double", "oci::number");
    show("0.1 + 0.2", text(amount<double>("0.1") + amount<double>("0.2")),
         text(amount<number>("0.1") + amount<number>("0.2")));
    show("0.1, deposited 10000 times", text(deposits<double>()), text(deposits<number>()));
    show("1.005 rounded to cents", money(cents(amount<double>("1.005"))),
         money(cents(amount<number>("1.005"))));
    show("4.35 as whole cents", std::to_string(static_cast<int>(amount<double>("4.35") * 100)),
         std::to_string(static_cast<int>(amount<number>("4.35") * 100)));

    Loan<double> before;
    Loan<number> after;
    int first = 0;
    for (int month = 1; month <= 360; ++month) {
        before.next_month();
        after.next_month();
        if (first == 0 && before.balance() != after.balance()) {
            first = month;
            show(("loan after month " + std::to_string(month)).c_str(), before.balance(),
                 after.balance());
        }
    }
    show("loan: last payment", before.last_payment(), after.last_payment());
    show("loan: interest in all", before.interest(), after.interest());
}
