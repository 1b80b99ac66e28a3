#pragma once

#include "cmnodesworker.h"
#include "tavuroles.h"

/// Internet radio from an M3U playlist: one screen, a row a station. The setting "playlist" names
/// the file, which is read once. Whatever keeps it from being read stands on the screen instead.
class RadioWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit RadioWorker(const QVariantHash& settings);

private:
    TavuRoles rowOf(int number, const QString& title, const QString& url) const;
    TavuRoles message(const QString& text) const;
};
