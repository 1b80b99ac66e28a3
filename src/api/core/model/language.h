#pragma once

#include "trstring.h"

/// Marks texts for translation without translating them.
class Language
{
public:
    static QString ntr(const TrCharData& source) { return QString::fromUtf8(source.text); }
};
