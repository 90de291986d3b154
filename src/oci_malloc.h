// The tagged allocator: a tag names what a block is for.
#pragma once

#include <cstddef>

// Returns `size` bytes aligned for any type, or null. `tag` (terminated, valid
// during the call) shows in the log at level TRACE. Safe from any thread.
extern "C" void *qzci_malloc(size_t size, const char *tag);

// Releases a block of qzci_malloc; a null `p` is allowed.
extern "C" void qzci_free(void *p);
