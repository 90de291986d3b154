// Private header of the extension module: numbers and columns as Python sees them.
#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <oci_number.hpp>

namespace nb = nanobind;

// An int, a Decimal or a Number: what computes with a Number. Its value is taken later, as it
// may raise.
struct Operand {
    nb::handle object;
    oci::number value() const;
};
bool is_operand(nb::handle object) noexcept;

void bind_number(nb::module_ &module);
void bind_column(nb::module_ &module);

template <>
struct nanobind::detail::type_caster<Operand> {
    NB_TYPE_CASTER(Operand, const_name("Number | int | decimal.Decimal"))
    bool from_python(handle source, uint32_t, cleanup_list *) noexcept {
        value.object = source;
        return is_operand(source);
    }
};
