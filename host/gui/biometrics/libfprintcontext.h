#pragma once

#include <QHash>
#include <QObject>
#include <QString>

#include <memory>

class QLockFile;
class QTimer;
typedef struct _FpContext FpContext;
typedef struct _FpDevice FpDevice;

// The process's one libfprint context and the readers it found. libfprint reports through
// GLib's main context of the GUI thread; Qt's GLib event dispatcher runs it inside Qt's event
// loop. Where Qt was built or started without GLib (QT_NO_GLIB), a timer iterates GLib's
// main context without blocking instead, so the reader still works, a little later.
//
// A reader is claimed before it is opened and released after it is closed: across processes
// by a lock file, within the process by its owner. A second studio on the same machine, or a
// second window of this one, thus hears "busy" at once instead of tearing the first one's
// scan apart.
class LibfprintContext : public QObject
{
    Q_OBJECT
public:
    enum class Claim {
        Granted,
        Busy,    // another process, or a reading window of this one, holds it
        Pending, // this process is still closing it: wait for released()
    };

    static LibfprintContext *instance();
    ~LibfprintContext() override;

    // The first reader found, nullptr when there is none (or it was unplugged).
    FpDevice *device() const;
    // How the GUI thread's event loop runs GLib's sources, as Qt's dispatcher names itself.
    QString dispatcherName() const;
    bool runsInsideGlibDispatcher() const;

    Claim claim(FpDevice *device);
    // Whether a reader of this process holds a device, or is still closing it.
    bool isClaimed() const { return !m_holders.isEmpty(); }
    // The device was closed: the next claim may have it.
    void release(FpDevice *device);
    void setClosing(FpDevice *device);
    // The lock file that stands for the device across processes.
    static QString lockFilePath(FpDevice *device);

signals:
    void released();
    void deviceRemoved();

private:
    LibfprintContext();
    static void onDeviceRemoved(FpContext *context, FpDevice *device, void *self);

    struct Holder
    {
        std::unique_ptr<QLockFile> lock;
        bool closing = false;
    };

    FpContext *m_context = nullptr;
    QTimer *m_glibPump = nullptr;
    QHash<FpDevice *, Holder *> m_holders;
};
