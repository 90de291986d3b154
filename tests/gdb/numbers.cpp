// Stops in `stop` with numbers in scope: by name, behind pointers, in arrays and classes.
#include <cstdio>
#include <cstring>
#include <oci_number.hpp>
#include <vector>

using namespace oci::literals;

static void stop() { std::puts("stop"); }

struct Line {
    int id;
    oci::number amount;
};

int main() {
    OCINumber c_number = (123.45_num).bytes();
    OCINumber *pointer = &c_number;
    OCINumber garbage;
    std::memset(&garbage, 0xcc, sizeof garbage);
    OCINumber bad_digit = {{3, 193, 2, 200}};
    OCINumber zeros = {{4, 193, 2, 1, 1}};
    oci::number values[] = {0,
                            -0.25_num,
                            -100,
                            12345678901234567890123456789012345678.9_num,
                            1e125_num,
                            -1.5e-100_num,
                            -1234567890123456789012345678901234567890_num};
    oci::number infinite[] = {oci::number("~"), oci::number("-~")};
    Line line = {7, 19.99_num};
    std::vector<oci::number> column = {1, 2.5_num};
    stop();
    return pointer == nullptr || garbage.OCINumberPart[0] == bad_digit.OCINumberPart[0] ||
           values[0] == infinite[0] || line.id == zeros.OCINumberPart[0] || column.empty();
}
