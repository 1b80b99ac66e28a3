#pragma once

#include "tavuhash.h"
#include "trstring.h"

/// Why a reply failed. An error whose name is empty means that there is no error.
class TAVU_EXPORT CMError : public TavuHash
{
    TAVU_RECORD(CMError)
    TAVU_FIELD(QString, name, Name)
    TAVU_FIELD(QString, title, Title)
    TAVU_FIELD(QString, message, Message)
    /// What the player may show instead of the bare message: a TavuActionReply.
    TAVU_FIELD(QVariantHash, actionReply, ActionReply)

    /// An error that says `message`, under the default name and title.
    explicit CMError(const TrString& message);

    static QString DefaultName() { return QStringLiteral("error"); }
    static QString DefaultTitle() { return QStringLiteral("Error"); }

    /// Whether there is an error.
    bool isSet() const { return !name().isEmpty(); }
};

/// "name: message".
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const CMError& error);

Q_DECLARE_METATYPE(CMError)
