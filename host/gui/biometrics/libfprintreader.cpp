#include "libfprintreader.h"

#include "biometricslogging.h"
#include "libfprintcontext.h"
#include "libfprintgallery.h"

#undef signals
#include <fprint.h>
#define signals Q_SIGNALS

struct LibfprintReader::Call
{
    std::shared_ptr<LibfprintReader *> reader;
    FpDevice *device;
};

namespace {

LibfprintReader::Call *callOf(void *data)
{
    return static_cast<LibfprintReader::Call *>(data);
}

void freeCall(void *data)
{
    delete callOf(data);
}

// A reader destroyed while the library still worked leaves the device to be closed and
// released here.
void closeOrphan(FpDevice *device)
{
    LibfprintContext::instance()->setClosing(device);
    fp_device_close(
        device, nullptr,
        [](GObject *source, GAsyncResult *result, gpointer) {
            auto *device = FP_DEVICE(source);
            fp_device_close_finish(device, result, nullptr);
            LibfprintContext::instance()->release(device);
        },
        nullptr);
}

} // namespace

LibfprintReader::LibfprintReader(QObject *parent)
    : FingerprintReader(parent)
    , m_self(std::make_shared<LibfprintReader *>(this))
{
    connect(LibfprintContext::instance(), &LibfprintContext::released, this, [this] {
        if (m_state == State::WaitingForClose)
            open();
    });
}

LibfprintReader::~LibfprintReader()
{
    *m_self = nullptr;
    if (m_device && m_statusHandler)
        g_signal_handler_disconnect(m_device, m_statusHandler);
    if (m_state == State::Opening || m_state == State::Reading)
        LibfprintContext::instance()->setClosing(m_device);
    if (m_cancellable) {
        g_cancellable_cancel(m_cancellable);
        g_object_unref(m_cancellable);
    }
    // A running call comes back to closeOrphan(); a reading device between calls is closed now.
    if (m_state == State::Reading && !m_callRunning)
        closeOrphan(m_device);
}

bool LibfprintReader::isDevicePresent()
{
    return LibfprintContext::instance()->device() != nullptr;
}

QString LibfprintReader::name() const
{
    FpDevice *device = m_device ? m_device : LibfprintContext::instance()->device();
    return device ? QString::fromUtf8(fp_device_get_name(device)) : tr("Сканер отпечатков");
}

bool LibfprintReader::startEnrolment()
{
    m_gallery.reset();
    return begin(Mode::Enrol);
}

bool LibfprintReader::startIdentification(const zeral::TEMPLATES_HASH &gallery)
{
    FpDevice *device = LibfprintContext::instance()->device();
    if (!device)
        return fail(Failure::NoDevice, tr("Сканер отпечатков не подключен."));
    m_gallery = std::make_unique<LibfprintGallery>(readableTemplates(gallery), device);
    if (m_gallery->isEmpty())
        return fail(Failure::Other,
                    tr("Нет отпечатков, снятых этим сканером, у тех, кто может подтвердить "
                       "изменение."));
    return begin(Mode::Identify);
}

bool LibfprintReader::begin(Mode mode)
{
    m_mode = mode;
    m_stopping = false;
    switch (m_state) {
    case State::Reading:
    case State::Opening:
        // Already reading: the new task starts after the running call is cancelled.
        m_restart = true;
        m_stopping = true;
        if (m_callRunning) {
            LibfprintContext::instance()->setClosing(m_device);
            g_cancellable_cancel(m_cancellable);
        }
        setActive(true);
        return true;
    case State::Closing:
    case State::WaitingForClose:
        m_restart = true;
        setActive(true);
        return true;
    case State::Idle:
        break;
    }
    open();
    return m_state != State::Idle;
}

void LibfprintReader::open()
{
    FpDevice *device = LibfprintContext::instance()->device();
    if (!device) {
        m_state = State::Idle;
        fail(Failure::NoDevice, tr("Сканер отпечатков не подключен."));
        return;
    }
    const LibfprintContext::Claim claim = LibfprintContext::instance()->claim(device);
    if (claim == LibfprintContext::Claim::Pending) {
        m_state = State::WaitingForClose;
        setActive(true);
        return;
    }
    if (claim == LibfprintContext::Claim::Busy) {
        m_state = State::Idle;
        fail(Failure::DeviceBusy,
             tr("Сканер отпечатков занят: с ним работает другая программа или другое окно. "
                "Закройте его там и повторите."));
        return;
    }
    m_device = device;
    m_state = State::Opening;
    m_restart = false;
    m_stopping = false;
    if (m_cancellable)
        g_object_unref(m_cancellable);
    m_cancellable = g_cancellable_new();
    setActive(true);
    m_callRunning = true;
    fp_device_open(m_device, m_cancellable, reinterpret_cast<GAsyncReadyCallback>(&opened),
                   new Call{m_self, m_device});
}

void LibfprintReader::opened(void *source, void *result, void *data)
{
    std::unique_ptr<Call> call(callOf(data));
    GError *error = nullptr;
    const bool ok = fp_device_open_finish(FP_DEVICE(source), G_ASYNC_RESULT(result), &error);
    LibfprintReader *self = *call->reader;
    if (!self) {
        if (ok)
            closeOrphan(call->device);
        else
            LibfprintContext::instance()->release(call->device);
        g_clear_error(&error);
        return;
    }
    self->m_callRunning = false;
    if (!ok) {
        self->m_state = State::Idle;
        LibfprintContext::instance()->release(self->m_device);
        if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
            self->failWith(error);
        else if (self->m_restart)
            self->open();
        g_clear_error(&error);
        return;
    }
    qCDebug(lcBiometrics) << "opened" << fp_device_get_name(self->m_device);
    self->m_statusHandler
        = g_signal_connect(self->m_device, "notify::finger-status",
                           G_CALLBACK(&LibfprintReader::fingerStatusChanged), self);
    self->m_state = State::Reading;
    if (self->m_stopping)
        self->closeDevice();
    else
        self->startCall();
}

void LibfprintReader::startCall()
{
    m_callRunning = true;
    if (m_mode == Mode::Enrol) {
        FpPrint *print = fp_print_new(m_device);
        fp_device_enroll(
            m_device, print, m_cancellable, reinterpret_cast<FpEnrollProgress>(&enrolProgress),
            new Call{m_self, m_device}, freeCall, reinterpret_cast<GAsyncReadyCallback>(&enrolDone),
            new Call{m_self, m_device});
    } else {
        fp_device_identify(m_device, m_gallery->prints(), m_cancellable, nullptr, nullptr, nullptr,
                           reinterpret_cast<GAsyncReadyCallback>(&identifyDone),
                           new Call{m_self, m_device});
    }
}

void LibfprintReader::enrolProgress(FpDevice *device, int stages, void *, void *data, GError *error)
{
    LibfprintReader *self = *callOf(data)->reader;
    if (!self || self->m_stopping)
        return;
    if (error) {
        emit self->progress(self->retryText(error));
        return;
    }
    emit self->progress(tr("Отпечаток снят %1 из %2 раз. Приложите палец еще раз.")
                            .arg(stages)
                            .arg(fp_device_get_nr_enroll_stages(device)));
}

void LibfprintReader::enrolDone(void *source, void *result, void *data)
{
    std::unique_ptr<Call> call(callOf(data));
    GError *error = nullptr;
    FpPrint *print = fp_device_enroll_finish(FP_DEVICE(source), G_ASYNC_RESULT(result), &error);
    LibfprintReader *self = *call->reader;
    if (!self) {
        if (print)
            g_object_unref(print);
        g_clear_error(&error);
        closeOrphan(call->device);
        return;
    }
    self->m_callRunning = false;
    if (!print) {
        const bool cancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
        if (!cancelled && !self->m_stopping)
            self->failWith(error);
        g_clear_error(&error);
        if (self->m_state == State::Reading)
            self->closeDevice();
        return;
    }
    guchar *bytes = nullptr;
    gsize length = 0;
    QByteArray serialized;
    if (fp_print_serialize(print, &bytes, &length, &error))
        serialized = QByteArray(reinterpret_cast<const char *>(bytes), int(length));
    g_free(bytes);
    g_object_unref(print);
    // One enrolment, one template: the device is let go before anybody hears of it.
    self->closeDevice();
    if (serialized.isEmpty()) {
        self->failWith(error);
        g_clear_error(&error);
        return;
    }
    qCInfo(lcBiometrics) << "enrolled a libfprint print of" << serialized.size() << "bytes";
    emit self->enrolled(LibfprintFormat, serialized);
}

void LibfprintReader::identifyDone(void *source, void *result, void *data)
{
    std::unique_ptr<Call> call(callOf(data));
    GError *error = nullptr;
    FpPrint *match = nullptr;
    const bool ok = fp_device_identify_finish(FP_DEVICE(source), G_ASYNC_RESULT(result), &match,
                                              nullptr, &error);
    LibfprintReader *self = *call->reader;
    if (!self) {
        g_clear_object(&match);
        g_clear_error(&error);
        closeOrphan(call->device);
        return;
    }
    self->m_callRunning = false;
    if (self->m_stopping) {
        g_clear_object(&match);
        g_clear_error(&error);
        self->closeDevice();
        return;
    }
    if (!ok && error && error->domain != FP_DEVICE_RETRY) {
        self->failWith(error);
        g_clear_error(&error);
        self->closeDevice();
        return;
    }
    if (error) {
        emit self->progress(self->retryText(error));
        g_clear_error(&error);
    } else {
        const zeral::TYPE_ID uid = LibfprintGallery::ownerOf(match);
        qCDebug(lcBiometrics) << "libfprint identified" << uid;
        g_clear_object(&match);
        emit self->identified(uid);
    }
    // A slot may have stopped or destroyed the reader; otherwise the next finger is awaited.
    if (!*call->reader) {
        closeOrphan(call->device);
        return;
    }
    if (self->m_state == State::Reading && !self->m_callRunning) {
        if (self->m_stopping)
            self->closeDevice();
        else
            self->startCall();
    }
}

void LibfprintReader::stop()
{
    m_restart = false;
    switch (m_state) {
    case State::Idle:
    case State::Closing:
        break;
    case State::WaitingForClose:
        m_state = State::Idle;
        break;
    case State::Opening:
        m_stopping = true;
        // On its way to being closed: another reader waits for it instead of hearing "busy".
        LibfprintContext::instance()->setClosing(m_device);
        g_cancellable_cancel(m_cancellable);
        break;
    case State::Reading:
        m_stopping = true;
        if (m_callRunning) {
            LibfprintContext::instance()->setClosing(m_device);
            g_cancellable_cancel(m_cancellable);
        } else {
            closeDevice();
        }
        break;
    }
    setActive(false);
}

void LibfprintReader::closeDevice()
{
    if (m_state != State::Reading)
        return;
    if (m_statusHandler) {
        g_signal_handler_disconnect(m_device, m_statusHandler);
        m_statusHandler = 0;
    }
    m_state = State::Closing;
    LibfprintContext::instance()->setClosing(m_device);
    setActive(m_restart);
    fp_device_close(m_device, nullptr, reinterpret_cast<GAsyncReadyCallback>(&closed),
                    new Call{m_self, m_device});
}

void LibfprintReader::closed(void *source, void *result, void *data)
{
    std::unique_ptr<Call> call(callOf(data));
    GError *error = nullptr;
    if (!fp_device_close_finish(FP_DEVICE(source), G_ASYNC_RESULT(result), &error)) {
        // A removed device may refuse to close; it is let go all the same.
        qCDebug(lcBiometrics) << "closing the reader:" << error->message;
        g_clear_error(&error);
    }
    LibfprintReader *self = *call->reader;
    if (self) {
        self->m_state = State::Idle;
        self->m_device = nullptr;
    }
    // Releasing tells every reader waiting for the device, this one too if it restarts.
    if (self && self->m_restart)
        self->m_state = State::WaitingForClose;
    LibfprintContext::instance()->release(call->device);
}

void LibfprintReader::fingerStatusChanged(void *device, void *, void *reader)
{
    auto *self = static_cast<LibfprintReader *>(reader);
    if (fp_device_get_finger_status(FP_DEVICE(device)) == FP_FINGER_STATUS_NEEDED
        && !self->m_stopping)
        emit self->fingerWanted();
}

void LibfprintReader::setActive(bool active)
{
    if (m_active == active)
        return;
    m_active = active;
    emit activeChanged(active);
}

bool LibfprintReader::fail(Failure failure, const QString &message)
{
    qCWarning(lcBiometrics) << "fingerprint reader:" << failure << message;
    setActive(m_state != State::Idle && m_restart);
    emit errorOccurred(failure, message);
    return false;
}

void LibfprintReader::failWith(const GError *error)
{
    if (!error) {
        fail(Failure::Other, tr("Сканер отпечатков не ответил."));
        return;
    }
    qCWarning(lcBiometrics) << "libfprint:" << g_quark_to_string(error->domain) << error->code
                            << error->message;
    if (error->domain == FP_DEVICE_ERROR) {
        switch (error->code) {
        case FP_DEVICE_ERROR_REMOVED:
            fail(Failure::DeviceRemoved,
                 tr("Сканер отпечатков отключен. Подключите его и повторите."));
            return;
        case FP_DEVICE_ERROR_BUSY:
        case FP_DEVICE_ERROR_ALREADY_OPEN:
            fail(Failure::DeviceBusy,
                 tr("Сканер отпечатков занят: с ним работает другая программа или другое "
                    "окно. Закройте его там и повторите."));
            return;
        default:
            break;
        }
    }
    // libusb says that another process has claimed the device in its own words.
    if (QByteArray(error->message).toLower().contains("busy")) {
        fail(Failure::DeviceBusy,
             tr("Сканер отпечатков занят другой программой. Закройте ее и повторите."));
        return;
    }
    fail(Failure::Other,
         tr("Сканер отпечатков сообщил об ошибке: %1").arg(QString::fromUtf8(error->message)));
}

QString LibfprintReader::retryText(const GError *error) const
{
    if (error && error->domain == FP_DEVICE_RETRY) {
        switch (error->code) {
        case FP_DEVICE_RETRY_TOO_SHORT:
            return tr("Палец убран слишком быстро. Приложите его еще раз.");
        case FP_DEVICE_RETRY_CENTER_FINGER:
            return tr("Приложите палец по центру сканера.");
        case FP_DEVICE_RETRY_REMOVE_FINGER:
            return tr("Уберите палец и приложите его еще раз.");
        default:
            break;
        }
    }
    return tr("Отпечаток не прочитан. Приложите палец еще раз.");
}
