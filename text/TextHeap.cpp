#include "text/TextHeap.h"

#include <cstdlib>
#include <cstring>

namespace
{
class StandardHeap final : public TextHeap
{
public:
    void* Allocate(size_t bytes) override { return std::malloc(bytes ? bytes : 1); }

    void* Reallocate(void* block, size_t bytes, size_t copyBytes) override
    {
        void* fresh = std::malloc(bytes ? bytes : 1);
        if (!fresh)
            return nullptr;
        if (block && copyBytes)
            std::memcpy(fresh, block, copyBytes < bytes ? copyBytes : bytes);
        std::free(block);
        return fresh;
    }

    void Free(void* block) override { std::free(block); }
};
} // namespace

TextHeap& GetTextHeap()
{
    // Never destroyed: a text held by a static object that was made before
    // the heap's first use is freed after the heap's own turn to be destroyed
    // would have come, on the way out of the program.
    static StandardHeap* const heap = new StandardHeap;
    return *heap;
}
