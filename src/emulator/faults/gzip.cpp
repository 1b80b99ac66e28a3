#include "gzip.h"

#include <zlib.h>

namespace emulator::faults {

QByteArray gzipOfBlanks(qint64 megabytes)
{
    constexpr int gzipWindow = 15 + 16; // zlib's way of asking for the gzip format
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY)
        != Z_OK)
        return {};
    QByteArray blanks(1024 * 1024, ' ');
    QByteArray packed;
    QByteArray piece(64 * 1024, Qt::Uninitialized);
    for (qint64 block = 0; block < megabytes; ++block) {
        stream.next_in = reinterpret_cast<Bytef*>(blanks.data());
        stream.avail_in = static_cast<uInt>(blanks.size());
        const int flush = block + 1 == megabytes ? Z_FINISH : Z_NO_FLUSH;
        do {
            stream.next_out = reinterpret_cast<Bytef*>(piece.data());
            stream.avail_out = static_cast<uInt>(piece.size());
            deflate(&stream, flush);
            packed.append(piece.constData(), piece.size() - static_cast<int>(stream.avail_out));
        } while (stream.avail_out == 0);
    }
    deflateEnd(&stream);
    return packed;
}

} // namespace emulator::faults
