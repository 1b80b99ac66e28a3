#include "fetchedbytes.h"

#include <algorithm>
#include <cstring>

namespace player {

/// What is at hand already may be read just now: it is not written again.
void FetchedBytes::Block::take(qint64 offset, const char* from, qint64 size)
{
    const bool touches = bytes && offset <= end && offset + size >= begin;
    if (!touches) {
        bytes.reset(new std::uint8_t[blockSize]);
        begin = end = offset;
    }
    const qint64 start = offset;
    const auto source = [from, start](qint64 at) { return from + (at - start); };
    if (offset < begin)
        copy(offset, begin, source(offset));
    if (offset + size > end)
        copy(std::max(offset, end), offset + size, source(std::max(offset, end)));
    begin = std::min(begin, offset);
    end = std::max(end, offset + size);
}

void FetchedBytes::Block::copy(qint64 first, qint64 last, const char* from)
{
    std::memcpy(bytes.get() + first, from, static_cast<std::size_t>(last - first));
}

void FetchedBytes::put(qint64 offset, const char* bytes, qint64 size)
{
    while (size > 0) {
        Block& block = m_blocks[offset / blockSize];
        const qint64 within = offset % blockSize;
        const qint64 part = std::min(size, blockSize - within);
        block.take(within, bytes, part);
        block.used = ++m_uses;
        offset += part;
        bytes += part;
        size -= part;
    }
}

ByteChunk FetchedBytes::get(qint64 offset, std::size_t atMost)
{
    const auto found = m_blocks.find(offset / blockSize);
    if (found == m_blocks.end())
        return {};
    Block& block = found->second;
    const qint64 within = offset % blockSize;
    if (within < block.begin || within >= block.end)
        return {};
    block.used = ++m_uses;
    const auto size = static_cast<std::size_t>(block.end - within);
    return { block.bytes, static_cast<std::size_t>(within), std::min(size, atMost) };
}

qint64 FetchedBytes::endOfRun(qint64 offset) const
{
    auto block = m_blocks.find(offset / blockSize);
    while (block != m_blocks.end()) {
        const qint64 base = block->first * blockSize;
        if (offset < base + block->second.begin || offset >= base + block->second.end)
            return offset;
        offset = base + block->second.end;
        block = m_blocks.find(offset / blockSize);
    }
    return offset;
}

void FetchedBytes::keepOnly(qint64 from, qint64 to, qint64 atMost)
{
    const auto isSpare = [&](const Blocks::value_type& block) {
        return block.first != 0 && (block.first < from / blockSize || block.first > to / blockSize);
    };
    auto spare = std::count_if(m_blocks.begin(), m_blocks.end(), isSpare);
    for (; spare * blockSize > atMost; --spare) {
        auto oldest = m_blocks.end();
        for (auto block = m_blocks.begin(); block != m_blocks.end(); ++block) {
            if (isSpare(*block)
                && (oldest == m_blocks.end() || block->second.used < oldest->second.used))
                oldest = block;
        }
        m_blocks.erase(oldest);
    }
}

} // namespace player
