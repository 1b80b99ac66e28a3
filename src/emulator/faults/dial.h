#pragma once

#include "rule.h"

#include <mutex>
#include <optional>
#include <vector>

namespace emulator::faults {

/// The rules by which faults are injected. The first rule that matches and is neither skipping nor
/// spent hits; rules that each hit once, one behind the other, are thus a script. Safe on every
/// thread.
class Dial
{
public:
    /// Adds the rule behind the others; gives its id.
    int add(const Rule& rule);
    /// False when no rule has the id.
    bool remove(int id);
    void clear();
    /// In their order, spent ones included.
    std::vector<Rule> rules() const;

    struct Hit
    {
        int rule = 0; ///< id
        QString name;
        Effect effect;
    };
    /// What happens to a request; counts it. Nothing when no rule hits.
    std::optional<Hit> take(const Target& target);

private:
    mutable std::mutex m_mutex;
    std::vector<Rule> m_rules;
    int m_lastId = 0;
};

} // namespace emulator::faults
