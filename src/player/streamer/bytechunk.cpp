#include "bytechunk.h"

#include <algorithm>
#include <cstring>

namespace player {

void ByteChunks::push(const char* bytes, std::size_t size)
{
    while (size > 0) {
        if (m_blocks.empty() || m_blocks.back().begin + m_blocks.back().size == blockSize)
            m_blocks.push_back({ std::unique_ptr<std::uint8_t[]>(new std::uint8_t[blockSize]) });
        ByteChunk& last = m_blocks.back();
        const std::size_t end = last.begin + last.size;
        const std::size_t part = std::min(size, blockSize - end);
        std::memcpy(last.bytes.get() + end, bytes, part);
        last.size += part;
        m_size += part;
        bytes += part;
        size -= part;
    }
}

ByteChunk ByteChunks::pop(std::size_t atMost)
{
    if (m_blocks.empty())
        return {};
    if (m_blocks.front().size > atMost)
        return popPart(atMost);
    ByteChunk first = std::move(m_blocks.front());
    m_blocks.pop_front();
    m_size -= first.size;
    return first;
}

ByteChunk ByteChunks::popPart(std::size_t size)
{
    const ByteChunk& first = m_blocks.front();
    ByteChunk part{ std::unique_ptr<std::uint8_t[]>(new std::uint8_t[size]), 0, size };
    std::memcpy(part.bytes.get(), first.bytes.get() + first.begin, size);
    drop(size);
    return part;
}

void ByteChunks::drop(std::size_t count)
{
    count = std::min(count, m_size);
    m_size -= count;
    while (count > 0) {
        ByteChunk& first = m_blocks.front();
        const std::size_t part = std::min(count, first.size);
        first.begin += part;
        first.size -= part;
        count -= part;
        if (first.size == 0)
            m_blocks.pop_front();
    }
}

void ByteChunks::clear()
{
    m_blocks.clear();
    m_size = 0;
}

} // namespace player
