#pragma once

#include <cstddef>

/// Copies bytes of this process's own memory to a buffer of that size. Returns false, instead of crashing, where an
/// address that came from outside points to nothing readable. Any thread.
bool copyIfReadable(const void *from, void *to, std::size_t bytes);
