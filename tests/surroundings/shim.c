/* Sets what SURROUNDINGS names before a program's main: a rounding mode, flushed denormals, or a
 * locale. Threads inherit it. */
#include <fenv.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#if defined __x86_64__
#include <xmmintrin.h>
#endif

__attribute__((constructor)) static void set_surroundings(void) {
    static const struct {
        const char *name;
        int mode;
    } rounding[] = {
        {"upward", FE_UPWARD}, {"downward", FE_DOWNWARD}, {"towardzero", FE_TOWARDZERO}};
    const char *wanted = getenv("SURROUNDINGS");
    if (wanted == NULL) return;
    for (unsigned i = 0; i < sizeof rounding / sizeof *rounding; ++i) {
        if (strcmp(wanted, rounding[i].name) == 0 && fesetround(rounding[i].mode) == 0) return;
    }
#if defined __x86_64__
    if (strcmp(wanted, "flush") == 0) {
        _mm_setcsr(_mm_getcsr() | 0x8040);
        return;
    }
#endif
    /* The system's messages stay what the tests know. */
    if (setlocale(LC_ALL, wanted) != NULL && setlocale(LC_MESSAGES, "C") != NULL) return;
    fprintf(stderr, "no such surroundings: %s\n", wanted);
    abort();
}
