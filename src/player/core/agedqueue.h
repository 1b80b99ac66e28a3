#pragma once

#include "cmerror.h"
#include "tavuroles.h"

#include <QList>

#include <functional>

namespace player {

/// What the age of its addresses costs the queue that plays. The queue fetches its tracks in one
/// go; after a long pause it passes over those that are left, though the service would give them
/// again.
class AgedQueue
{
public:
    using Tell = std::function<void(const TavuRoles&, const CMError&)>;

    /// A new queue plays.
    void begin() { *this = AgedQueue(); }
    /// The queue has passed over a track because of its age, to find what follows or, when
    /// `stepped`, because the listener wants to go on.
    void passOver(const TavuRoles& track, const CMError& error, bool stepped);
    /// What plays needed a fresh address.
    void setRenewed() { m_renewed = true; }
    bool isRenewed() const { return m_renewed; }
    /// The track that would have followed, or that the listener's step would have led to; empty
    /// when none was passed over.
    TavuRoles firstPassedOver(bool stepped) const;
    /// Tells of the tracks that were passed over, and forgets them.
    void tellPassedOver(const Tell& tell);

private:
    struct Passed
    {
        TavuRoles track;
        CMError error;
        bool stepped = false;
    };

    QList<Passed> m_passed;
    bool m_renewed = false;
};

} // namespace player
