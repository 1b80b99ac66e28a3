#include "agedqueue.h"

#include <algorithm>
#include <utility>

namespace player {

/// A track that comes round once more begins another search for what follows.
void AgedQueue::passOver(const TavuRoles& track, const CMError& error, bool stepped)
{
    const auto isKnown = [&](const Passed& passed) {
        return passed.stepped == stepped && passed.track.path() == track.path();
    };
    if (std::any_of(m_passed.cbegin(), m_passed.cend(), isKnown)) {
        const auto ofTheSame = [&](const Passed& passed) { return passed.stepped == stepped; };
        m_passed.erase(std::remove_if(m_passed.begin(), m_passed.end(), ofTheSame), m_passed.end());
    }
    m_passed.append({ track, error, stepped });
}

TavuRoles AgedQueue::firstPassedOver(bool stepped) const
{
    for (const Passed& passed : m_passed) {
        if (passed.stepped == stepped)
            return passed.track;
    }
    return TavuRoles();
}

void AgedQueue::tellPassedOver(const Tell& tell)
{
    const QList<Passed> passed = std::exchange(m_passed, {});
    QList<CMPath> told;
    for (const Passed& each : passed) {
        if (told.contains(each.track.path()))
            continue;
        told.append(each.track.path());
        tell(each.track, each.error);
    }
}

} // namespace player
