#include "stationorder.h"

namespace emulator::documents {

namespace {

quint64 scramble(quint64 value)
{
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
    value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
    return value ^ (value >> 31);
}

// A permutation without a table: a Feistel network shuffles a square of at least the wanted size,
// and what lands outside is shuffled again until it lands inside.
int permute(quint64 key, int size, int place)
{
    int half = 1;
    while (half * half < size)
        half *= 2;
    auto value = static_cast<quint64>(place);
    const auto side = static_cast<quint64>(half);
    do {
        quint64 left = value / side;
        quint64 right = value % side;
        for (quint64 round = 0; round < 4; ++round) {
            const quint64 next = left ^ (scramble(key + round * 0x9e3779b97f4a7c15 + right) % side);
            left = right;
            right = next;
        }
        value = left * side + right;
    } while (value >= static_cast<quint64>(size));
    return static_cast<int>(value);
}

int placeInRound(quint64 session, int size, int round, int place)
{
    return permute(scramble(session) + static_cast<quint64>(round), size, place);
}

} // namespace

int stationPlace(quint64 session, int poolSize, int position)
{
    if (poolSize <= 1)
        return 0;
    if (poolSize == 2)
        return static_cast<int>((session + static_cast<quint64>(position)) % 2);
    const int round = position / poolSize;
    int place = position % poolSize;
    // The first two of a round change places when the first would repeat the last round's end.
    if (place < 2 && round > 0
        && placeInRound(session, poolSize, round, 0)
            == placeInRound(session, poolSize, round - 1, poolSize - 1))
        place = 1 - place;
    return placeInRound(session, poolSize, round, place);
}

} // namespace emulator::documents
