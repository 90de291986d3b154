// The column of column.c with oci_number.hpp.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <limits>
#include <numeric>
#include <oci_number.hpp>
#include <string>
#include <vector>

namespace {

using namespace oci::literals;

struct Payment {
    std::uint32_t account;
    std::string purpose;
    oci::number amount;
};

void report(const std::vector<Payment> &payments) {
    std::vector<const OCINumber *> column;
    for (const Payment &payment : payments) column.push_back(&payment.amount.bytes());
    // What the call does not reach stays NaN.
    std::vector<double> values(column.size(), std::numeric_limits<double>::quiet_NaN());
    std::string failure;
    try {
        oci::to_reals(column.data(), static_cast<uword>(column.size()), values.data());
    } catch (const oci::error &) {
        failure = "the bytes hold no number";
    }
    const auto end = std::find_if(values.begin(), values.end(), [](double v) { return v != v; });
    const auto count = end - values.begin();
    const double sum = std::accumulate(values.begin(), end, 0.0);
    const auto [low, high] = std::minmax_element(values.begin(), end);
    std::cout << count << " payments: sum " << std::fixed << std::setprecision(2) << sum
              << ", mean " << std::setprecision(3) << sum / static_cast<double>(count)
              << std::setprecision(2) << ", from " << *low << " to " << *high << '\n';
    if (!failure.empty()) {
        std::cout << "account " << payments[static_cast<std::size_t>(count)].account << ": "
                  << failure << '\n';
    }
}

}  // namespace

int main() {
    std::vector<Payment> payments = {{1000, "rent", 120.5_num}, {1001, "rent", -35.25_num},
                                     {1002, "rent", 0.1_num},   {1003, "rent", 1999.99_num},
                                     {1004, "rent", 64},        {1005, "rent", 7.75_num}};
    report(payments);
    payments[3].amount = oci::number(OCINumber{});  // a record that nobody filled
    report(payments);
}
