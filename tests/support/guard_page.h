// Bytes against an unreadable page: an access one byte too far ends the program.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

// A writable copy of some bytes that stands between two unreadable pages, close
// against the page behind it, or against the one before it.
class GuardedBytes {
public:
    enum class Against { page_behind, page_before };

    GuardedBytes(const void *bytes, size_t size, Against side = Against::page_behind) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t inside = (size / page + 1) * page;
        mapped_ = inside + 2 * page;
        map_ = static_cast<char *>(
            mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (map_ == MAP_FAILED || mprotect(map_ + page, inside, PROT_READ | PROT_WRITE) != 0) {
            std::abort();
        }
        data_ = map_ + page + (side == Against::page_behind ? inside - size : 0);
        if (size > 0) std::memcpy(data_, bytes, size);
    }
    explicit GuardedBytes(std::string_view text, Against side = Against::page_behind)
        : GuardedBytes(text.data(), text.size(), side) {}
    GuardedBytes(const GuardedBytes &) = delete;
    GuardedBytes &operator=(const GuardedBytes &) = delete;
    ~GuardedBytes() { munmap(map_, mapped_); }

    void *address() const { return data_; }

    // As a pointer to bytes or to a record of alignment 1.
    template <class T>
    T *as() const {
        static_assert(alignof(T) == 1);
        return reinterpret_cast<T *>(data_);
    }

private:
    char *map_;
    size_t mapped_;
    char *data_;
};
