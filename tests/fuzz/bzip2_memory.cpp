// libbz2's tables are most of what a small stream costs, since the sanitizer maps and marks blocks
// of that size anew each time. Here they are kept for the next stream, unless the code under test
// brings memory of its own; the sanitizer does not see what libbz2 does inside them anyway. Takes
// the place of libbz2's own functions, for its own calls, too.
#include <bzlib.h>
#include <dlfcn.h>

#include <cstddef>
#include <cstdlib>
#include <map>
#include <mutex>
#include <vector>

namespace {

struct alignas(std::max_align_t) Head
{
    size_t size;
};

std::mutex mutex;

// Never taken down, since streams of any thread may end later.
std::map<size_t, std::vector<Head *>> &unused()
{
    static auto &blocks = *new std::map<size_t, std::vector<Head *>>;
    return blocks;
}

void *take(void *, int count, int each)
{
    const size_t size = size_t(count) * size_t(each);
    const std::lock_guard lock(mutex);
    std::vector<Head *> &blocks = unused()[size];
    if (blocks.empty()) {
        auto *head = static_cast<Head *>(std::malloc(sizeof(Head) + size));
        if (!head)
            return nullptr;
        head->size = size;
        return head + 1;
    }
    Head *head = blocks.back();
    blocks.pop_back();
    return head + 1;
}

void giveBack(void *, void *block)
{
    if (!block)
        return;
    Head *head = static_cast<Head *>(block) - 1;
    const std::lock_guard lock(mutex);
    unused()[head->size].push_back(head);
}

template<typename Function>
Function *next(Function &, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int BZ2_bzDecompressInit(bz_stream *stream, int verbosity, int small)
{
    static const auto init = next(BZ2_bzDecompressInit, "BZ2_bzDecompressInit");
    if (!stream->bzalloc) {
        stream->bzalloc = take;
        stream->bzfree = giveBack;
    }
    return init(stream, verbosity, small);
}

extern "C" int BZ2_bzCompressInit(bz_stream *stream, int blockSize, int verbosity, int workFactor)
{
    static const auto init = next(BZ2_bzCompressInit, "BZ2_bzCompressInit");
    stream->bzalloc = take;
    stream->bzfree = giveBack;
    return init(stream, blockSize, verbosity, workFactor);
}
