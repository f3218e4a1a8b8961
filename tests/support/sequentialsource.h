#pragma once

#include <QIODevice>

#include <cstring>

// A device that can't tell how much is left in it, like a socket: it hands out `data` and
// forgets what it handed out.
struct SequentialSource : QIODevice
{
    SequentialSource() = default;
    explicit SequentialSource(const QByteArray &bytes)
        : data(bytes)
    {
        open(QIODevice::ReadOnly);
    }

    QByteArray data;

    bool isSequential() const override { return true; }
    qint64 readData(char *out, qint64 max) override
    {
        const qint64 n = qMin(max, qint64(data.size()));
        std::memcpy(out, data.constData(), size_t(n));
        data.remove(0, int(n));
        return n;
    }
    qint64 writeData(const char *, qint64) override { return -1; }
};
