#include "wordindex.h"

#include <QHash>

#include <algorithm>
#include <numeric>

namespace emulator::catalogue {

namespace {

size_t at(int place)
{
    return static_cast<size_t>(place);
}

// Numbers the distinct words in their sorted order.
QHash<QString, int> sortWords(const std::vector<QStringList>& words, std::vector<QString>& sorted)
{
    QHash<QString, int> places;
    for (const QStringList& list : words) {
        for (const QString& word : list)
            places.insert(word, 0);
    }
    sorted.reserve(at(places.size()));
    for (auto word = places.keyBegin(); word != places.keyEnd(); ++word)
        sorted.push_back(*word);
    std::sort(sorted.begin(), sorted.end());
    for (size_t place = 0; place < sorted.size(); ++place)
        places[sorted[place]] = static_cast<int>(place);
    return places;
}

} // namespace

WordIndex::WordIndex(const std::vector<QStringList>& words)
{
    const QHash<QString, int> places = sortWords(words, m_words);
    m_wordStarts.assign(m_words.size() + 1, 0);
    m_thingStarts.reserve(words.size() + 1);
    m_thingStarts.push_back(0);
    for (const QStringList& list : words) {
        const auto begin = static_cast<std::ptrdiff_t>(m_thingWords.size());
        for (const QString& word : list)
            m_thingWords.push_back(places.value(word));
        std::sort(m_thingWords.begin() + begin, m_thingWords.end());
        m_thingWords.erase(
            std::unique(m_thingWords.begin() + begin, m_thingWords.end()), m_thingWords.end());
        for (auto i = static_cast<size_t>(begin); i < m_thingWords.size(); ++i)
            ++m_wordStarts[at(m_thingWords[i]) + 1];
        m_thingStarts.push_back(static_cast<int>(m_thingWords.size()));
    }
    std::partial_sum(m_wordStarts.begin(), m_wordStarts.end(), m_wordStarts.begin());
    m_postings.resize(m_thingWords.size());
    std::vector<int> free = m_wordStarts;
    for (size_t thing = 0; thing < words.size(); ++thing) {
        for (int i = m_thingStarts[thing]; i < m_thingStarts[thing + 1]; ++i)
            m_postings[at(free[at(m_thingWords[at(i)])]++)] = static_cast<int>(thing);
    }
}

WordIndex::Range WordIndex::wordRange(const QString& prefix) const
{
    const auto begin = std::lower_bound(m_words.begin(), m_words.end(), prefix);
    const auto end = std::partition_point(
        begin, m_words.end(), [&prefix](const QString& word) { return word.startsWith(prefix); });
    return { static_cast<int>(begin - m_words.begin()), static_cast<int>(end - m_words.begin()) };
}

int WordIndex::postings(const Range& range) const
{
    return m_wordStarts[at(range.end)] - m_wordStarts[at(range.begin)];
}

bool WordIndex::hasWordIn(int thing, const Range& range) const
{
    const auto begin = m_thingWords.begin() + m_thingStarts[at(thing)];
    const auto end = m_thingWords.begin() + m_thingStarts[at(thing) + 1];
    const auto found = std::lower_bound(begin, end, range.begin);
    return found != end && *found < range.end;
}

int WordIndex::wordOfPosting(int posting) const
{
    const auto after = std::upper_bound(m_wordStarts.begin(), m_wordStarts.end(), posting);
    return static_cast<int>(after - m_wordStarts.begin()) - 1;
}

bool WordIndex::seenBefore(int thing, int posting, const Range& range) const
{
    return hasWordIn(thing, { range.begin, wordOfPosting(posting) });
}

WordIndex::Hits WordIndex::find(const QStringList& prefixes, int from, int limit) const
{
    Hits hits;
    std::vector<Range> ranges;
    for (const QString& prefix : prefixes)
        ranges.push_back(wordRange(prefix));
    if (ranges.empty() || m_words.empty())
        return hits;
    const Range rarest = *std::min_element(ranges.begin(), ranges.end(),
        [this](const Range& a, const Range& b) { return postings(a) < postings(b); });
    const int first = m_wordStarts[at(rarest.begin)];
    const int end = m_wordStarts[at(rarest.end)];
    for (int posting = first + std::max(from, 0); posting < end; ++posting) {
        const int thing = m_postings[at(posting)];
        const bool matches = std::all_of(ranges.begin(), ranges.end(),
            [this, thing](const Range& range) { return hasWordIn(thing, range); });
        if (!matches || seenBefore(thing, posting, rarest))
            continue;
        if (static_cast<int>(hits.things.size()) == limit) {
            hits.next = posting - first;
            return hits;
        }
        hits.things.push_back(thing);
    }
    return hits;
}

} // namespace emulator::catalogue
