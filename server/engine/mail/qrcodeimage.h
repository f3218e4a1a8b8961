#pragma once

#include <QByteArray>
#include <QString>

namespace zeral::server {

// A text as a QR code in a PNG image, for mails that carry data a phone should read.
class QrCodeImage
{
public:
    // Pixels per module, and the white margin (in modules) that readers need around a code.
    static constexpr int ModulePixels = 6;
    static constexpr int QuietModules = 4;

    // The PNG bytes, or empty with the reason in `*why` (the text doesn't fit one code).
    static QByteArray png(const QByteArray &text, QString *why);

    QrCodeImage() = delete;
};

} // namespace zeral::server
