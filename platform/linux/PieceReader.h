#pragma once

#include <functional>

#include <sys/types.h>

// Reads an open file from its position to its end and hands the bytes to `take` on the calling
// thread, in order and in pieces. Of a large file another thread reads a few pieces ahead
// meanwhile: copying them costs a sixth of what hashing them does. `size` is what the file is
// expected to have; whatever it has is read. False when it cannot be read to its end.
[[nodiscard]] bool readPieces(int file, off_t size,
                              const std::function<void(const char *, size_t)> &take);
