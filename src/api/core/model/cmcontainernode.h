#pragma once

#include "cmuinode.h"

/// A node that has rows.
class TAVU_EXPORT CMContainerNode : public CMUINode
{
    Q_OBJECT

public:
    explicit CMContainerNode(const CMPath& path);

    void setContainerType(TavuRolesContainerType::Enum type);
    /// Whether the container as a whole can be played.
    void setPlayable(bool playable);
};
