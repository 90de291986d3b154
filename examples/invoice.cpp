// The invoice of invoice.c with oci_number.hpp: operators in place of calls, and each error an
// exception that has its number and message.
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <oci_number.hpp>
#include <string_view>

namespace {

struct Item {
    std::string_view name, quantity, price;  // as somebody typed them
    int tax;                                 // in percent
};

constexpr Item items[] = {
    {"Oak board, 2.40 m", "7", "23.95", 19},
    {"Screws, box of 200", "3", "8.49", 19},
    {"Linseed oil, litre", "2.5", "11.8", 19},
    {"Joinery, a handbook", "1", "34.90", 7},
    {"Delivery", "1", "12,00", 19},
};

struct Tax {
    int percent;
    oci::number net;
};

void print_line(std::string_view name, const oci::number &amount) {
    std::cout << std::left << std::setw(28) << name << std::right << std::fixed
              << std::setprecision(2) << std::setw(12) << amount << '\n';
}

}  // namespace

int main() {
    Tax taxes[] = {{19, 0}, {7, 0}};
    for (const Item &item : items) {
        try {
            const oci::number amount =
                round(oci::number(item.quantity) * oci::number(item.price), 2);
            print_line(item.name, amount);
            for (Tax &tax : taxes) {
                if (tax.percent == item.tax) tax.net += amount;
            }
        } catch (const oci::error &e) {
            std::cout << item.price << ": error " << e.number() << ", " << e.what() << '\n'
                      << std::left << std::setw(28) << item.name << "    left out\n";
        }
    }
    oci::number total;
    for (const Tax &tax : taxes) {
        const oci::number amount = round(tax.net * tax.percent / 100, 2);
        print_line("Tax, " + std::to_string(tax.percent) + " %", amount);
        total += tax.net + amount;
    }
    print_line("To be paid", total);
}
