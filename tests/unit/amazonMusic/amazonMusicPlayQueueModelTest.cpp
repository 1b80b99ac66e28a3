#include "playQueueFixture.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <random>

// The queue against a model of it that is nothing but lists of numbers: long random runs of
// commands, after each of which both must have answered the same.

namespace {

constexpr int commands = 100000;
constexpr int commandsPerQueue = 2000;

/// What a reply says, or will say.
struct Answer
{
    bool finished = false;
    QString error; // Its message; empty for a success.
    int naturalId = -1;
    int shuffleId = -1;
    int track = -1; // The number that the track was made with.
};

bool operator==(const Answer& a, const Answer& b)
{
    return a.finished == b.finished && a.error == b.error && a.naturalId == b.naturalId
        && a.shuffleId == b.shuffleId && a.track == b.track;
}

void PrintTo(const Answer& answer, std::ostream* out)
{
    *out << "{finished " << answer.finished << ", error '" << answer.error.toStdString()
         << "', natural " << answer.naturalId << ", shuffle " << answer.shuffleId << ", track "
         << answer.track << '}';
}

Answer failure(const QString& message)
{
    Answer answer;
    answer.finished = true;
    answer.error = message;
    return answer;
}

class Model
{
public:
    Model(bool isAlbum, int maxSize)
        : m_isAlbum(isAlbum)
        , m_maxSize(maxSize)
    {
    }

    int size() const { return static_cast<int>(m_tracks.size()); }
    bool isAlbum() const { return m_isAlbum; }

    Answer first() const
    {
        if (m_chunks == 0)
            return Answer();
        if (m_first >= size())
            return failure(QStringLiteral("Failed to get first chunk, nothing to play"));
        return at(m_first);
    }

    Answer step(int from, bool shuffle, bool round, int by) const
    {
        if (from < 0 || from >= size())
            return failure(QStringLiteral("Current track is not more available"));
        const bool shuffled = shuffle && m_isAlbum;
        const int place = (shuffled ? placeInShuffle(from) : from) + by;
        const bool inside = place >= 0 && place < size();
        if (!inside && by > 0 && !m_isAlbum && !round)
            return Answer();
        if (!inside && !round)
            return failure(QStringLiteral("End of queue reached"));
        const int wrapped = (place + size()) % size();
        return at(shuffled ? m_shuffled.at(static_cast<size_t>(wrapped)) : wrapped);
    }

    /// Returns what everybody who waits is answered.
    Answer chunk(const std::vector<int>& tracks, int index)
    {
        const bool isFirst = ++m_chunks == 1;
        if (tracks.empty())
            return failure(QStringLiteral("No more chunks to play"));
        int start = isFirst ? index : size();
        m_tracks.insert(m_tracks.end(), tracks.begin() + (isFirst ? 0 : index), tracks.end());
        if (isFirst)
            m_first = index;
        if (m_isAlbum) {
            shuffle(m_first);
        } else if (start > m_maxSize) {
            m_tracks.erase(m_tracks.begin(), m_tracks.begin() + (start - m_maxSize));
            start = m_maxSize;
        }
        return at(start);
    }

    void failChunk() { ++m_chunks; }

    void playMode(int current, bool shuffleOn)
    {
        if (!m_isAlbum || shuffleOn == m_shuffleOn)
            return;
        m_shuffleOn = shuffleOn;
        if (shuffleOn && current >= 0 && current < size())
            shuffle(current);
    }

    void shuffle(int current)
    {
        m_shuffled.resize(m_tracks.size());
        std::iota(m_shuffled.begin(), m_shuffled.end(), 0);
        for (size_t i = 1; i < m_shuffled.size(); ++i)
            std::swap(m_shuffled.at(i), m_shuffled.at(static_cast<size_t>(std::rand()) % (i + 1)));
        std::iter_swap(
            m_shuffled.begin(), std::find(m_shuffled.begin(), m_shuffled.end(), current));
    }

    Answer at(int naturalId) const
    {
        Answer answer;
        answer.finished = true;
        answer.naturalId = naturalId;
        answer.track = m_tracks.at(static_cast<size_t>(naturalId));
        if (m_isAlbum)
            answer.shuffleId = placeInShuffle(naturalId);
        return answer;
    }

private:
    int placeInShuffle(int naturalId) const
    {
        return static_cast<int>(
            std::find(m_shuffled.begin(), m_shuffled.end(), naturalId) - m_shuffled.begin());
    }

    bool m_isAlbum;
    int m_maxSize;
    int m_chunks = 0;
    int m_first = 0;
    bool m_shuffleOn = false;
    std::vector<int> m_tracks; // By natural id.
    std::vector<int> m_shuffled; // Natural ids.
};

class AmazonMusicPlayQueueModelTest : public PlayQueueFixture
{
protected:
    int random(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
    bool chance(int percent) { return random(1, 100) <= percent; }

    void newQueue()
    {
        const bool isAlbum = chance(50);
        const int maxSize = random(0, 30);
        m_host.setMaxQueueSize(maxSize);
        m_waiting.clear();
        makeQueue(isAlbum ? TavuRolesAudioType::Tracks : TavuRolesAudioType::Station);
        m_model.emplace(isAlbum, maxSize);
    }

    Answer answerOf(const CMReply<AmazonMusicTrack>& reply) const
    {
        Answer answer;
        answer.finished = reply.isFinished();
        if (!answer.finished)
            return answer;
        answer.error = reply.error().message();
        if (!answer.error.isEmpty())
            return answer;
        const AmazonMusicTrack track = reply.value();
        answer.naturalId = track.naturalId();
        answer.shuffleId = m_model->isAlbum() ? track.shuffleId() : -1;
        answer.track = idOf(track).toInt();
        return answer;
    }

    void compare(const CMReply<AmazonMusicTrack>& reply, const Answer& expected)
    {
        EXPECT_EQ(answerOf(reply), expected);
        if (!expected.finished)
            m_waiting.append(reply);
    }

    void compareWaiting(const Answer& expected)
    {
        for (const auto& reply : std::exchange(m_waiting, {}))
            EXPECT_EQ(answerOf(reply), expected);
    }

    /// Runs a command that may shuffle on both, with the same random numbers.
    template <class Command, class ModelCommand>
    void alike(Command&& command, ModelCommand&& modelCommand)
    {
        const auto seed = static_cast<unsigned>(random(1, 1000000));
        std::srand(seed);
        command();
        std::srand(seed);
        modelCommand();
    }

    void step()
    {
        const int from = random(-2, m_model->size() + 1);
        const bool shuffle = chance(50);
        const bool round = chance(50);
        const bool next = chance(50);
        // Out of date, as after a new shuffle; only the natural id counts.
        const AmazonMusicTrack track = at(from, random(-1, m_model->size()));
        compare(next ? m_queue->getNextTrack(track, shuffle, round)
                     : m_queue->getPreviousTrack(track, shuffle, round),
            m_model->step(from, shuffle, round, next ? 1 : -1));
    }

    void chunkArrives()
    {
        // An album has one chunk; it shall survive others all the same.
        if (m_model->isAlbum() && m_model->size() > 60)
            return;
        const int count = chance(10) ? 0 : random(1, 12);
        const int index = count > 0 ? random(0, count - 1) : 0;
        std::vector<int> tracks(static_cast<size_t>(count));
        std::iota(tracks.begin(), tracks.end(), m_nextTrack);
        const AmazonMusicRetrieverChunk given = chunk(count, index, m_nextTrack);
        m_nextTrack += count;
        Answer expected;
        alike([&] { giveChunk(given); }, [&] { expected = m_model->chunk(tracks, index); });
        compareWaiting(expected);
    }

    void chunkFails()
    {
        const CMError error(QStringLiteral("no chunk"));
        giveError(error);
        m_model->failChunk();
        compareWaiting(failure(QStringLiteral("no chunk")));
    }

    void modeChanges()
    {
        const int current = random(-1, m_model->size());
        const bool shuffle = chance(50);
        alike([&] { m_queue->playModeChanged(at(current), shuffle); },
            [&] { m_model->playMode(current, shuffle); });
    }

    void cancelAll()
    {
        m_queue->cancel();
        for (const auto& reply : qAsConst(m_waiting))
            EXPECT_EQ(reply.error(), CMVoidReply::ErrorCancel());
        m_waiting.clear();
    }

    void runCommand()
    {
        const int kind = random(1, 100);
        if (kind <= 8)
            chunkArrives();
        else if (kind <= 9)
            chunkFails();
        else if (kind <= 15)
            modeChanges();
        else if (kind <= 17)
            cancelAll();
        else if (kind <= 25)
            compare(m_queue->getFirstTrack(), m_model->first());
        else
            step();
        EXPECT_EQ(m_queue->size(), m_model->size());
    }

    void compareOrders()
    {
        for (int id = 1; id < m_model->size(); ++id) {
            EXPECT_EQ(answerOf(m_queue->getNextTrack(at(id - 1), false, false)), m_model->at(id));
            EXPECT_EQ(answerOf(m_queue->getNextTrack(at(id - 1), true, true)),
                m_model->step(id - 1, true, true, 1));
        }
    }

    std::mt19937 m_random{ 20240229 };
    std::optional<Model> m_model;
    QList<CMReply<AmazonMusicTrack>> m_waiting;
    int m_nextTrack = 0;
};

TEST_F(AmazonMusicPlayQueueModelTest, AnswersAsTheModelDoesWhateverComes)
{
    for (int command = 0; command < commands; ++command) {
        if (command % commandsPerQueue == 0)
            newQueue();
        runCommand();
        if (command % 100 == 99)
            compareOrders();
        ASSERT_FALSE(HasFailure()) << "after command " << command;
    }
}

} // namespace
