// A loader: reads a file of fields between semicolons into records, and tells of each line that
// it refuses where and why. A line is taken as a whole or not at all.
//
//   load FILE
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <oci_number.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Records as they would go to a database: two numbers as their 22 bytes.
struct Payment {
    std::uint32_t account;
    std::string date;
    OCINumber amount;
    OCINumber fee;  // in percent
};

// The fields of a line, one after the other, with the column at which each begins.
class Fields {
public:
    explicit Fields(std::string_view line) : line_(line) {}
    std::size_t column() const { return begin_ + 1; }
    std::string_view next() {
        begin_ = next_;
        if (begin_ > line_.size()) throw std::runtime_error("a field is missing");
        const std::size_t end = std::min(line_.find(';', begin_), line_.size());
        next_ = end + 1;
        return line_.substr(begin_, end - begin_);
    }

private:
    std::string_view line_;
    std::size_t begin_ = 0, next_ = 0;
};

Payment read_payment(Fields &fields) {
    Payment payment;
    payment.account = oci::number(fields.next()).to<std::uint32_t>();
    payment.date = fields.next();
    const oci::number amount(fields.next());
    if (abs(amount) >= 1'000'000'000) throw std::runtime_error("an amount has at most 9 digits");
    if (round(amount, 2) != amount) throw std::runtime_error("an amount has no fraction of a cent");
    payment.amount = amount.bytes();
    payment.fee = oci::number(fields.next()).bytes();
    return payment;
}

}  // namespace

int main(int argc, char **argv) {
    const std::string path = argc > 1 ? argv[1] : "payments.csv";
    std::ifstream file(path);
    if (!file) {
        std::cerr << path << ": cannot be read\n";
        return 2;
    }
    std::vector<Payment> payments;
    std::string line;
    std::getline(file, line);  // the columns' names
    int refused = 0;
    for (int number = 2; std::getline(file, line); ++number) {
        Fields fields(line);
        try {
            payments.push_back(read_payment(fields));
        } catch (const std::runtime_error &e) {  // oci::error among them
            ++refused;
            std::cout << "line " << number << ", column " << fields.column() << ": " << e.what()
                      << '\n';
        }
    }
    oci::number sum, fees;
    for (const Payment &payment : payments) {
        const oci::number amount(payment.amount);
        sum += amount;
        fees += round(abs(amount) * oci::number(payment.fee) / 100, 2);
    }
    std::cout << payments.size() << " records, " << refused << " lines refused\n"
              << "sum " << to_fixed(sum, 2) << ", fees " << to_fixed(fees, 2) << '\n';
}
