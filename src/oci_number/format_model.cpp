// The format models of text output: "TM", "TM9", or digit positions "9" and "0"
// with at most one period, "FM" before them.
#include "oci_number/call_frame.h"

namespace oci_number {

namespace {

constexpr ub4 max_body_length = 63;

bool is_letter(OraText c, char lower) { return (c | 0x20) == lower; }

// A model as far as it has been parsed.
struct Model {
    const OraText *body;
    ub4 length;
    ub4 scale = 0;
    boolean has_fm = 0;
    boolean has_tm = 0;
};

sword OCINumberInvalidLength(ub4 length) {
    QZOCI_LOG_ERROR("invalid format string, fmt_raw_length:%d, ret:%d", static_cast<int>(length),
                    OCI_ERROR);
    return OCI_ERROR;
}

sword OCINumberScanBody(Model &model) {
    bool has_period = false;
    for (ub4 i = 0; i < model.length; ++i) {
        const OraText c = model.body[i];
        const int length = static_cast<int>(model.length);
        const int index = static_cast<int>(i);
        if (c == '.') {
            if (has_period) {
                QZOCI_LOG_ERROR(
                    "period apperas twice in the format string, fmt:%.*s, index:%d, ret:%d", length,
                    model.body, index, OCI_ERROR);
                return OCI_ERROR;
            }
            has_period = true;
        } else if (c == '0' || c == '9') {
            if (has_period) ++model.scale;
        } else {
            QZOCI_LOG_ERROR(
                "find invalid character in the format string, fmt:%.*s, index:%d, ret:%d", length,
                model.body, index, OCI_ERROR);
            return OCI_ERROR;
        }
    }
    return OCI_SUCCESS;
}

sword OCINumberParseModel(Model &model) {
    if (model.length >= 2 && is_letter(model.body[1], 'm')) {
        if (is_letter(model.body[0], 't')) {
            if (model.length > 3 || (model.length == 3 && model.body[2] != '9')) {
                return OCINumberInvalidLength(model.length);
            }
            model.has_tm = 1;
            return OCI_SUCCESS;
        }
        if (is_letter(model.body[0], 'f')) {
            model.has_fm = 1;
            model.body += 2;
            model.length -= 2;
        }
    }
    if (model.length > max_body_length) return OCINumberInvalidLength(model.length);
    return OCINumberScanBody(model);
}

}  // namespace

sword OCINumberProcessFormat(const OraText **fmt_raw, ub4 *fmt_raw_length, ub4 *scale,
                             boolean *has_fm, boolean *has_tm) {
    Model model{*fmt_raw, *fmt_raw_length};
    const sword status = OCINumberParseModel(model);
    if (status == OCI_SUCCESS) {
        *fmt_raw = model.body;
        *fmt_raw_length = model.length;
    }
    *scale = model.scale;
    *has_fm = model.has_fm;
    *has_tm = model.has_tm;
    QZOCI_LOG_DEBUG("format info, has_tm:%d, has_fm:%d, fmt:%.*s, scale:%d", *has_tm, *has_fm,
                    OCINumberShownLength(*fmt_raw_length), *fmt_raw, static_cast<int>(*scale));
    return OCI_NUMBER_RETURN("OCINumberProcessFormat", status);
}

}  // namespace oci_number
