// Fuzzing: memory of many kilobytes is given out again as it came back, because an input that takes a
// microsecond must not have the system map and clear megabytes. Replaces the global operators of the program
// that it is a part of; while such memory is not in use, the address sanitizer knows.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORBE_FUZZ_POISONS 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define ORBE_FUZZ_POISONS 1
#endif

#if defined(ORBE_FUZZ_POISONS)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#endif

namespace {

constexpr std::size_t page = 4096;
constexpr std::size_t large = std::size_t{128} * 1024;

// Everything here may run before any constructor and behind any destructor.
class Large_Blocks {
public:
    void* take(std::size_t size) {
        const std::lock_guard lock(m_mutex);
        Block* unused = nullptr;
        for (Block& block : m_blocks) {
            if (block.is_free && block.size == size) {
                block.is_free = false;
                ASAN_UNPOISON_MEMORY_REGION(block.memory, size);
                return block.memory;
            }
            if (block.memory == nullptr && unused == nullptr) {
                unused = &block;
            }
        }
        void* const memory = std::aligned_alloc(page, (size + page - 1) / page * page);
        if (memory != nullptr && unused != nullptr) {
            *unused = {memory, size, false};
        }
        return memory;
    }

    // Answers whether it is one of these.
    bool give_back(void* memory) {
        const std::lock_guard lock(m_mutex);
        for (Block& block : m_blocks) {
            if (block.memory == memory) {
                block.is_free = true;
                ASAN_POISON_MEMORY_REGION(memory, block.size);
                return true;
            }
        }
        return false;
    }

private:
    struct Block {
        void* memory;
        std::size_t size;
        bool is_free;
    };

    std::mutex m_mutex;
    std::array<Block, 64> m_blocks{};
};

constinit Large_Blocks g_large_blocks;

void* try_to_allocate(std::size_t size, std::size_t alignment) noexcept {
    void* memory = nullptr;
    if (size >= large && alignment <= page) {
        memory = g_large_blocks.take(size);
    } else if (alignment <= alignof(std::max_align_t)) {
        memory = std::malloc(size == 0 ? 1 : size);
    } else {
        memory = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    }
    return memory;
}

void* allocate(std::size_t size, std::size_t alignment) {
    void* const memory = try_to_allocate(size, alignment);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void release(void* memory) noexcept {
    const bool may_be_large = memory != nullptr && reinterpret_cast<std::uintptr_t>(memory) % page == 0;
    if (!may_be_large || !g_large_blocks.give_back(memory)) {
        std::free(memory);
    }
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}

// The sanitizer's own would not go with the operators below.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return try_to_allocate(size, alignof(std::max_align_t));
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}

void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    release(memory);
}
