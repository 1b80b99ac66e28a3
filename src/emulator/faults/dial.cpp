#include "dial.h"

#include <algorithm>

namespace emulator::faults {

int Dial::add(const Rule& rule)
{
    const std::lock_guard lock(m_mutex);
    m_rules.push_back(rule);
    m_rules.back().id = ++m_lastId;
    return m_lastId;
}

bool Dial::remove(int id)
{
    const std::lock_guard lock(m_mutex);
    const auto gone = std::remove_if(
        m_rules.begin(), m_rules.end(), [id](const Rule& rule) { return rule.id == id; });
    const bool found = gone != m_rules.end();
    m_rules.erase(gone, m_rules.end());
    return found;
}

void Dial::clear()
{
    const std::lock_guard lock(m_mutex);
    m_rules.clear();
}

std::vector<Rule> Dial::rules() const
{
    const std::lock_guard lock(m_mutex);
    return m_rules;
}

std::optional<Dial::Hit> Dial::take(const Target& target)
{
    const std::lock_guard lock(m_mutex);
    for (Rule& rule : m_rules) {
        if (rule.isSpent() || !rule.matches(target))
            continue;
        if (rule.seen++ < rule.skip)
            continue;
        ++rule.hits;
        return Hit{ rule.id, rule.name, rule.effect };
    }
    return std::nullopt;
}

} // namespace emulator::faults
