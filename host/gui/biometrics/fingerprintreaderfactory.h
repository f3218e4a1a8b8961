#pragma once

#include "fingerprintreader.h"

#include <QString>

// Which reader the fingerprint screens read through. The studio sets the kind from its
// settings at start; the screens, the studio's and the plugins' alike, ask here for a reader.
// A real reader is used only when libfprint finds one; otherwise, and when the reader is busy
// or gone, the screens read through the simulated one and say why.
class FingerprintReaderFactory
{
public:
    enum class Kind { Simulated, Libfprint };

    // Until the studio says otherwise, readers are simulated: no test or tool that makes a
    // screen touches the machine's USB devices by accident.
    static void setPreferredKind(Kind kind);
    static Kind preferredKind();
    // The value of the studio's setting: "libfprint" or "simulated"; anything else is `fallback`.
    static Kind kindFromSetting(const QString &value, Kind fallback);
    static QString settingValue(Kind kind);

    // A reader of the preferred kind if it can be used; otherwise a simulated one, and
    // `notice` (when given) says why for the operator.
    static FingerprintReader *create(QObject *parent, QString *notice = nullptr);
    // What the screens tell the operator when a reader failed and the simulated one stands in.
    static QString fallbackNotice(const QString &reason);
    // Whether a failure of a real reader is one the simulated reader stands in for.
    static bool fallsBack(FingerprintReader::Failure failure);

    FingerprintReaderFactory() = delete;
};
