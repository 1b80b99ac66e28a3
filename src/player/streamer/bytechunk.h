#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

namespace player {

/// A piece of a stream: `size` bytes from `begin` on.
struct ByteChunk
{
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t begin = 0;
    std::size_t size = 0;
};

/// Bytes on their way from one end to the other. What comes in small pieces is gathered, so that
/// the memory taken stays near the bytes held.
class ByteChunks
{
public:
    void push(const char* bytes, std::size_t size);
    /// The next piece, at most one block and `atMost` bytes; empty when nothing is held.
    ByteChunk pop(std::size_t atMost);
    /// Takes out the first `count` bytes, at most all.
    void drop(std::size_t count);
    void clear();

    std::size_t size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

private:
    // A whole number of pages together with what the allocator keeps about it.
    static constexpr std::size_t blockSize = std::size_t{ 128 } * 1024 - 32;

    ByteChunk popPart(std::size_t size);

    std::deque<ByteChunk> m_blocks;
    std::size_t m_size = 0;
};

} // namespace player
