#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

namespace player {

/// A piece of a stream: `size` bytes from `begin` on, which never change.
struct ByteChunk
{
    std::shared_ptr<const std::uint8_t[]> bytes;
    std::size_t begin = 0;
    std::size_t size = 0;
};

/// The bytes of one resource that are at hand, wherever they lie in it. They are held in blocks,
/// one stretch in each: where two stretches of a block do not touch, the later one stays.
class FetchedBytes
{
public:
    void put(qint64 offset, const char* bytes, qint64 size);
    /// The bytes from `offset` on, at most one block and `atMost` of them; empty when there are
    /// none.
    ByteChunk get(qint64 offset, std::size_t atMost);
    /// Where the bytes end that are at hand from `offset` on without a gap.
    qint64 endOfRun(qint64 offset) const;

    /// Gives back what lies neither at the very beginning nor from `from` to `to`, but for
    /// `atMost` bytes of it: those used last.
    void keepOnly(qint64 from, qint64 to, qint64 atMost);
    void clear() { m_blocks.clear(); }
    /// The memory taken.
    qint64 footprint() const { return static_cast<qint64>(m_blocks.size()) * blockSize; }

    // A whole number of pages together with what the allocator keeps about it.
    static constexpr qint64 blockSize = 64 * 1024 - 32;

private:
    struct Block
    {
        std::shared_ptr<std::uint8_t[]> bytes;
        qint64 begin = 0; // In the block.
        qint64 end = 0;
        quint64 used = 0;

        void take(qint64 offset, const char* from, qint64 size);
        void copy(qint64 first, qint64 last, const char* from);
    };
    using Blocks = std::map<qint64, Block>;

    Blocks m_blocks; // By their number in the resource.
    quint64 m_uses = 0;
};

} // namespace player
