// The plain decimal text of a number, cut and rounded to a count of fraction
// digits: the step that the conversions to text and to reals share.
#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"

namespace oci_number {

namespace {

// A text and its cut: `scale` fraction digits are kept behind the period.
struct Cut {
    OraText *str;
    sb8 period_pos;
    sb8 scale;
};

// Adds one to the last kept digit. Fraction nines that turn into zeros are taken
// from the kept digits, so a carry leaves no zeros at the end. Returns whether
// the carry ran out of digits.
bool OCINumberCarry(Cut &cut) {
    bool is_cross_period = false;
    for (sb8 i = cut.period_pos + cut.scale; i >= 0; --i) {
        OraText &c = cut.str[i];
        if (c == '9') {
            c = '0';
            if (!is_cross_period) --cut.scale;
        } else if (c == '.') {
            is_cross_period = true;
        } else if (c >= '0' && c <= '8') {
            ++c;
            return false;
        } else {
            break;
        }
    }
    return true;
}

// Puts a "1" before the digits, which are all zeros, and behind the sign.
void OCINumberAddLeadingOne(Cut &cut) {
    ++cut.period_pos;
    sb8 i = cut.period_pos + cut.scale;
    for (; i > 0 && cut.str[i - 1] != '-'; --i) cut.str[i] = cut.str[i - 1];
    cut.str[i] = '1';
}

// Cuts a text that has more than `scale` fraction digits. Returns whether its new
// length is known: a carry may need a byte that the buffer does not have.
bool OCINumberCutText(Cut cut, sb8 capacity, sb8 &number_str_len) {
    // Rounds the magnitude, so half goes away from zero.
    if (cut.str[cut.period_pos + cut.scale + 1] > '4' && OCINumberCarry(cut)) {
        if (number_str_len >= capacity) return false;
        OCINumberAddLeadingOne(cut);
    }
    number_str_len = cut.period_pos + cut.scale + 1;
    if (cut.scale == 0) {
        if (number_str_len == 1) {
            cut.str[0] = '0';
        } else {
            --number_str_len;
        }
    }
    return true;
}

// '0.5' becomes '.5' and '-0.5' '-.5'; "0" and '-0' stay.
void OCINumberDropLeadingZero(OraText *&number_str, sb8 &number_str_len) {
    if (number_str_len <= 1) return;
    if (number_str[0] == '-' && number_str[1] == '0' && number_str_len != 2) {
        number_str[1] = '-';
    } else if (number_str[0] != '0') {
        return;
    }
    ++number_str;
    --number_str_len;
}

constexpr const char *trace_name = "OCINumberProcessValue";

sword OCINumberNoText(const OCINumber *number, sword status) {
    QZOCI_LOG_DEBUG("fail to get str from number number:%p",
                    address(static_cast<const void *>(number)));
    return status;
}

}  // namespace

sword OCINumberRenderValue(const OCINumber *number, OraText **number_raw_str, sb8 *number_raw_len,
                           ub4 scale, boolean has_tm) {
    OraText *number_str = *number_raw_str;
    auto n_number_str_len = static_cast<ub2>(*number_raw_len);
    if (const sword status = getStrFromNumber(number, number_str, &n_number_str_len)) {
        return OCINumberNoText(number, status);
    }
    sb8 number_str_len = n_number_str_len;
    if (!has_tm) {
        sb8 period_pos = 0;
        while (period_pos < number_str_len && number_str[period_pos] != '.') ++period_pos;
        if (number_str_len - 1 - period_pos > sb8{scale} &&
            !OCINumberCutText({number_str, period_pos, scale}, *number_raw_len, number_str_len)) {
            return OCI_ERROR;
        }
    }
    OCINumberDropLeadingZero(number_str, number_str_len);
    *number_raw_str = number_str;
    *number_raw_len = number_str_len;
    return OCI_SUCCESS;
}

sword OCINumberProcessValue(const OCINumber *number, OraText **number_raw_str, sb8 *number_raw_len,
                            ub4 scale, boolean has_tm) {
    return OCI_NUMBER_RETURN(
        trace_name, OCINumberRenderValue(number, number_raw_str, number_raw_len, scale, has_tm));
}

sword OCINumberProcessDigits(const OCINumber *number, plain_number::PlainNumber &p, ub4 scale) {
    if (!plain_number::read(*number, p) || !fits(p, number_text_size)) {
        return OCI_NUMBER_RETURN(trace_name, OCINumberNoText(number, OCI_ERROR));
    }
    round_places(p, scale);
    return OCI_NUMBER_RETURN(trace_name, OCI_SUCCESS);
}

}  // namespace oci_number
