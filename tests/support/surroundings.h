// Settings of the floating-point unit that a program may leave on: no result depends on them.
#pragma once

#include <locale.h>

#include <cfenv>
#include <string>
#if defined __x86_64__
#include <xmmintrin.h>
#endif

// As the constructor is told until the end of its scope.
class Surroundings {
public:
    explicit Surroundings(long which) {
        std::fegetenv(&former_);
        constexpr int rounding[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
        std::fesetround(rounding[which % 4]);
#if defined __x86_64__
        if (which % count < 4) return;
        // Denormals are zero, as operands and as results; long doubles have 53 bits.
        _mm_setcsr(_mm_getcsr() | 0x8040);
        unsigned short control;
        asm volatile("fnstcw %0" : "=m"(control));
        control = static_cast<unsigned short>((control & ~0x300) | 0x200);
        asm volatile("fldcw %0" : : "m"(control));
#endif
    }
    Surroundings(const Surroundings &) = delete;
    Surroundings &operator=(const Surroundings &) = delete;
    ~Surroundings() { std::fesetenv(&former_); }

    static constexpr long count = 8;

private:
    std::fenv_t former_;
};

// The real nearest to a text, in all surroundings.
template <class Real>
Real parsed(const std::string &s) {
    static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
    const Surroundings nearest(0);
    if constexpr (sizeof(Real) == 4) {
        return strtof_l(s.c_str(), nullptr, c);
    } else if constexpr (sizeof(Real) == 8) {
        return strtod_l(s.c_str(), nullptr, c);
    } else {
        return strtold_l(s.c_str(), nullptr, c);
    }
}
