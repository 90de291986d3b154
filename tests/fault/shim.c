/* Makes one call of the C library fail, in a program that loads this library first. FAULT tells
 * which: "write 3 28" is the third write, with error 28; "write 3 cut" writes the half of its
 * bytes, "read 2 shrink" halves the file first, "read 2 unlink" removes FAULT_FILE first. "malloc
 * 7" is the seventh allocation, "malloc 7 on" all from there on. When a call was hit, the file
 * FAULT_MARK is made. */
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *p, size_t size);

static char name[8], how[8];
static long number;
static long calls;

/* Calls are counted from main on: what is in front of it are the initialisers of libraries, which
 * nobody can catch. */
static int (*program)(int argc, char **argv, char **environment);

static int counted_program(int argc, char **argv, char **environment) {
    const char *fault = getenv("FAULT");
    if (fault != NULL) sscanf(fault, "%7s %ld %7s", name, &number, how);
    return program(argc, argv, environment);
}

typedef int start_function(int (*)(int, char **, char **), int, char **, void (*)(void),
                           void (*)(void), void (*)(void), void *);
int __libc_start_main(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(void),
                      void (*fini)(void), void (*rtld_fini)(void), void *stack_end) {
    start_function *start;
    void *const found = dlsym(RTLD_NEXT, "__libc_start_main");
    memcpy(&start, &found, sizeof start);
    program = main;
    return start(counted_program, argc, argv, init, fini, rtld_fini, stack_end);
}

/* Whether this call of the function is to fail. */
static int is_hit(const char *called) {
    if (strcmp(called, name) != 0) return 0;
    const long call = __atomic_add_fetch(&calls, 1, __ATOMIC_RELAXED);
    if (call == number) {
        const char *mark = getenv("FAULT_MARK");
        if (mark != NULL) close(open(mark, O_CREAT | O_WRONLY, 0600));
    }
    return call == number || (call > number && strcmp(how, "on") == 0);
}

static void *no_memory(void) {
    errno = ENOMEM;
    return NULL;
}

void *malloc(size_t size) { return is_hit("malloc") ? no_memory() : __libc_malloc(size); }
void *calloc(size_t count, size_t size) {
    return is_hit("malloc") ? no_memory() : __libc_calloc(count, size);
}
void *realloc(void *p, size_t size) {
    return is_hit("malloc") ? no_memory() : __libc_realloc(p, size);
}

static ssize_t failed(void) {
    errno = atoi(how);
    return -1;
}

ssize_t write(int fd, const void *bytes, size_t size) {
    if (is_hit("write")) {
        if (strcmp(how, "cut") != 0) return failed();
        size /= 2;
    }
    return syscall(SYS_write, fd, bytes, size);
}

ssize_t read(int fd, void *bytes, size_t size) {
    if (is_hit("read")) {
        char path[40];
        struct stat status;
        snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
        if (strcmp(how, "unlink") == 0) {
            unlink(getenv("FAULT_FILE"));
        } else if (strcmp(how, "shrink") == 0) {
            if (fstat(fd, &status) != 0 || truncate(path, status.st_size / 2) != 0) abort();
        } else {
            return failed();
        }
    }
    return syscall(SYS_read, fd, bytes, size);
}
