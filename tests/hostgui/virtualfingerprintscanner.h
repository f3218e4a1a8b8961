#pragma once

// The finger side of libfprint's "virtual_image" reader, for tests that drive the real library
// without hardware. The variable FP_VIRTUAL_IMAGE names a Unix socket that the library's
// virtual reader listens on while it is open; a client writes a greyscale image to it as two
// 32-bit integers (width, height) and width × height bytes, and the reader takes it as a
// finger put on the glass and lifted again. A negative width is a command instead; -5 makes
// the reader disappear, as an unplugged one does.
//
// The library extracts minutiae from the image and compares them, so the images must look
// like fingers. drawFinger() draws ridges as the level lines of a phase field: concentric
// ridges around a core, plus a spiral term around each of a few dozen chosen points, which
// makes a ridge end or fork exactly there. The pattern number chooses the core, the ridges'
// shape and the points; the noise seed only speckles the grey, as two readings of one finger
// never give the same image.
//
// Every test process gets its own socket in a temporary folder: construct the scanner before
// anything makes the process's libfprint context.

#include <QByteArray>
#include <QDataStream>
#include <QLocalSocket>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtMath>

#include <cmath>

class VirtualFingerprintScanner
{
public:
    static constexpr int Width = 256;
    static constexpr int Height = 320;

    VirtualFingerprintScanner() { qputenv("FP_VIRTUAL_IMAGE", socketPath().toLocal8Bit()); }
    ~VirtualFingerprintScanner() { m_socket.abort(); }

    QString socketPath() const { return m_dir.filePath(QStringLiteral("reader")); }

    // Puts the finger of `pattern` on the reader; false when the reader isn't listening.
    bool put(int pattern) { return send(Width, Height, drawFinger(pattern, ++m_readings)); }
    // The reader disappears, as when its cable is pulled.
    bool unplug() { return send(-5, 0, QByteArray()); }

    static QByteArray drawFinger(int pattern, quint32 noiseSeed)
    {
        QRandomGenerator shape(quint32(pattern) * 7919u + 17u);
        const double coreX = Width / 2.0 + shape.bounded(40) - 20;
        const double coreY = Height / 2.0 + shape.bounded(40) - 20;
        const double squeeze = 0.8 + shape.bounded(40) / 100.0;
        const double ridgePeriod = 9.0; // pixels, about half a millimetre at 500 dpi
        struct Minutia
        {
            double x, y, turn;
        };
        QVector<Minutia> minutiae;
        while (minutiae.size() < 30) {
            const Minutia next{30.0 + shape.bounded(Width - 60), 30.0 + shape.bounded(Height - 60),
                               shape.bounded(2) ? 1.0 : -1.0};
            bool apart = true;
            for (const Minutia &other : qAsConst(minutiae))
                apart = apart && std::hypot(next.x - other.x, next.y - other.y) >= 28;
            if (apart)
                minutiae.append(next);
        }
        QRandomGenerator noise(noiseSeed);
        QByteArray image(Width * Height, char(255));
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x) {
                // Outside the oval of the fingertip the glass stays white.
                const double ex = (x - Width / 2.0) / (Width / 2.0 - 4);
                const double ey = (y - Height / 2.0) / (Height / 2.0 - 4);
                if (ex * ex + ey * ey > 1)
                    continue;
                const double dx = x - coreX, dy = (y - coreY) * squeeze;
                double phase = 2 * M_PI * qSqrt(dx * dx + dy * dy) / ridgePeriod;
                for (const Minutia &point : qAsConst(minutiae))
                    phase += point.turn * qAtan2(y - point.y, x - point.x);
                const double grey = 128 + 110 * qCos(phase) + noise.bounded(21) - 10;
                image[y * Width + x] = char(qBound(0, int(grey), 255));
            }
        }
        return image;
    }

private:
    bool send(qint32 width, qint32 height, const QByteArray &pixels)
    {
        // The reader listens anew each time it is opened: a closed reader dropped the last
        // connection.
        if (m_socket.state() != QLocalSocket::ConnectedState) {
            m_socket.abort();
            m_socket.connectToServer(socketPath());
            if (!m_socket.waitForConnected(2000))
                return false;
        }
        QByteArray header;
        QDataStream out(&header, QIODevice::WriteOnly);
        out.setByteOrder(QDataStream::LittleEndian); // the library reads native integers
        out << width << height;
        return m_socket.write(header + pixels) == header.size() + pixels.size();
    }

    QTemporaryDir m_dir;
    QLocalSocket m_socket;
    quint32 m_readings = 0;
};
