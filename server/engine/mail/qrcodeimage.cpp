#include "qrcodeimage.h"

#include <QBuffer>
#include <QImage>

#include <qrencode.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace zeral::server {

QByteArray QrCodeImage::png(const QByteArray &text, QString *why)
{
    if (text.isEmpty()) {
        *why = QStringLiteral("the text is empty");
        return {};
    }
    // Version 0: the smallest code that holds the bytes; level M survives a smudge or a fold
    // on a printed mail and still holds some 2,300 bytes.
    errno = 0;
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeData(text.size(), reinterpret_cast<const unsigned char *>(text.constData()), 0,
                          QR_ECLEVEL_M),
        &QRcode_free);
    if (!code) {
        *why = errno == ERANGE
                   ? QStringLiteral("%1 bytes are more than one QR code holds").arg(text.size())
                   : QStringLiteral("the QR code could not be made (errno %1)").arg(errno);
        return {};
    }
    const int side = (code->width + 2 * QuietModules) * ModulePixels;
    QImage image(side, side, QImage::Format_Grayscale8);
    image.fill(255);
    for (int y = 0; y < code->width; ++y) {
        for (int x = 0; x < code->width; ++x) {
            if ((code->data[y * code->width + x] & 1) == 0) // bit 0: a dark module
                continue;
            const int left = (x + QuietModules) * ModulePixels;
            const int top = (y + QuietModules) * ModulePixels;
            for (int row = top; row < top + ModulePixels; ++row)
                std::memset(image.scanLine(row) + left, 0, ModulePixels);
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG")) {
        *why = QStringLiteral("the PNG image could not be written");
        return {};
    }
    return bytes;
}

} // namespace zeral::server
