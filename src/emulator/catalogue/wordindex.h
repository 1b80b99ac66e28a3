#pragma once

#include <QStringList>

#include <vector>

namespace emulator::catalogue {

/// Finds things by the beginnings of their words. A query costs by what it finds, not by how much
/// is indexed, and can be continued where an earlier one ended.
class WordIndex
{
public:
    WordIndex() = default;
    /// `words[i]` are the folded words of thing i.
    explicit WordIndex(const std::vector<QStringList>& words);

    struct Hits
    {
        std::vector<int> things;
        int next = -1; ///< where to continue; -1: nothing follows
    };

    /// At most `limit` things of which each of `prefixes` begins a word, each thing once; things
    /// whose word is shorter come first. `from` is 0 or the `next` of an earlier call with the same
    /// prefixes. No prefixes find nothing.
    Hits find(const QStringList& prefixes, int from, int limit) const;

private:
    struct Range
    {
        int begin = 0;
        int end = 0;
    };

    Range wordRange(const QString& prefix) const;
    int postings(const Range& range) const;
    bool hasWordIn(int thing, const Range& range) const;
    int wordOfPosting(int posting) const;
    bool seenBefore(int thing, int posting, const Range& range) const;

    std::vector<QString> m_words; ///< sorted, each once
    std::vector<int> m_wordStarts; ///< where a word's postings begin; one more than words
    std::vector<int> m_postings; ///< things, by word
    std::vector<int> m_thingStarts; ///< where a thing's words begin; one more than things
    std::vector<int> m_thingWords; ///< sorted places of words, by thing
};

} // namespace emulator::catalogue
