#include "libfprintcontext.h"

#include "biometricslogging.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QLockFile>
#include <QTimer>

// GLib's headers use "signals" as a name; Qt's keyword must not replace it there.
#undef signals
#include <fprint.h>
#define signals Q_SIGNALS

LibfprintContext *LibfprintContext::instance()
{
    // Made on first use and kept for the life of the process: libfprint reads the variables
    // of its virtual readers only when the context is made.
    static LibfprintContext *context = new LibfprintContext;
    return context;
}

LibfprintContext::LibfprintContext()
    : QObject(QCoreApplication::instance())
{
    if (!runsInsideGlibDispatcher()) {
        qCWarning(lcBiometrics) << "the event dispatcher" << dispatcherName()
                                << "doesn't run GLib: iterating it from a timer";
        m_glibPump = new QTimer(this);
        m_glibPump->setInterval(10);
        connect(m_glibPump, &QTimer::timeout, this,
                [] { g_main_context_iteration(nullptr, FALSE); });
        m_glibPump->start();
    }
    m_context = fp_context_new();
    g_signal_connect(m_context, "device-removed", G_CALLBACK(&LibfprintContext::onDeviceRemoved),
                     this);
    fp_context_enumerate(m_context);
    GPtrArray *devices = fp_context_get_devices(m_context);
    qCInfo(lcBiometrics) << "libfprint found" << devices->len << "fingerprint reader(s)";
    for (guint i = 0; i < devices->len; ++i) {
        auto *device = FP_DEVICE(g_ptr_array_index(devices, i));
        qCInfo(lcBiometrics) << "reader" << fp_device_get_name(device) << "driver"
                             << fp_device_get_driver(device);
    }
}

LibfprintContext::~LibfprintContext()
{
    qDeleteAll(m_holders);
    if (m_context) {
        g_signal_handlers_disconnect_by_data(m_context, this);
        g_object_unref(m_context);
    }
}

FpDevice *LibfprintContext::device() const
{
    GPtrArray *devices = fp_context_get_devices(m_context);
    return devices->len > 0 ? FP_DEVICE(g_ptr_array_index(devices, 0)) : nullptr;
}

QString LibfprintContext::dispatcherName() const
{
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher ? QString::fromLatin1(dispatcher->metaObject()->className()) : QString();
}

bool LibfprintContext::runsInsideGlibDispatcher() const
{
    // A widget application has the platform's subclass, QPAEventDispatcherGlib.
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher && dispatcher->inherits("QEventDispatcherGlib");
}

LibfprintContext::Claim LibfprintContext::claim(FpDevice *device)
{
    if (Holder *holder = m_holders.value(device))
        return holder->closing ? Claim::Pending : Claim::Busy;
    auto lock = std::make_unique<QLockFile>(lockFilePath(device));
    lock->setStaleLockTime(0); // a dead studio's lock is stale at once; a live one never is
    if (!lock->tryLock(0)) {
        qint64 pid = 0;
        QString host, application;
        lock->getLockInfo(&pid, &host, &application);
        qCInfo(lcBiometrics) << "fingerprint reader held by" << application << "pid" << pid;
        return Claim::Busy;
    }
    auto *holder = new Holder;
    holder->lock = std::move(lock);
    m_holders.insert(device, holder);
    return Claim::Granted;
}

void LibfprintContext::setClosing(FpDevice *device)
{
    if (Holder *holder = m_holders.value(device))
        holder->closing = true;
}

void LibfprintContext::release(FpDevice *device)
{
    delete m_holders.take(device);
    emit released();
}

QString LibfprintContext::lockFilePath(FpDevice *device)
{
    // A virtual reader is as many readers as there are sockets: its socket is part of the name.
    QCryptographicHash name(QCryptographicHash::Sha1);
    name.addData(fp_device_get_driver(device));
    name.addData(fp_device_get_device_id(device));
    name.addData(qgetenv("FP_VIRTUAL_IMAGE"));
    name.addData(qgetenv("FP_VIRTUAL_DEVICE"));
    return QDir::temp().filePath(QStringLiteral("zr-fingerprint-%1.lock")
                                     .arg(QString::fromLatin1(name.result().toHex().left(16))));
}

void LibfprintContext::onDeviceRemoved(FpContext *, FpDevice *device, void *self)
{
    qCWarning(lcBiometrics) << "fingerprint reader removed:" << fp_device_get_name(device);
    emit static_cast<LibfprintContext *>(self)->deviceRemoved();
}
