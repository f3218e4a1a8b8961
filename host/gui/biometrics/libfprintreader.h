#pragma once

#include "fingerprintreader.h"

#include <memory>

class LibfprintGallery;
typedef struct _FpDevice FpDevice;
typedef struct _GCancellable GCancellable;
typedef struct _GError GError;

// A USB fingerprint reader driven through libfprint. Everything runs on the library's
// asynchronous calls from the GUI thread's event loop; nothing waits for the device. stop()
// cancels the running call and closes the device once the library has let go of it; a start
// meanwhile waits for that close. The device is claimed through LibfprintContext from open to
// close, so another studio that wants it hears that it is busy.
//
// Enrolment reads the finger as many times as the device needs and stores the library's
// serialized print; identification matches each finger against the gallery's prints with
// the library's own identification, finger after finger.
class LibfprintReader : public FingerprintReader
{
    Q_OBJECT
public:
    explicit LibfprintReader(QObject *parent = nullptr);
    ~LibfprintReader() override;

    bool startEnrolment() override;
    bool startIdentification(const zeral::TEMPLATES_HASH &gallery) override;
    void stop() override;
    bool isActive() const override { return m_active; }
    bool isSimulated() const override { return false; }
    QString name() const override;
    quint32 templateFormat() const override { return LibfprintFormat; }

    // Whether libfprint sees a reader on this machine now.
    static bool isDevicePresent();

    struct Call; // one asynchronous call's way back to its reader, which may be gone by then

private:
    enum class State {
        Idle,
        WaitingForClose, // this process still closes the device
        Opening,
        Reading,
        Closing,
    };
    enum class Mode { Enrol, Identify };

    bool begin(Mode mode);
    void open();
    void startCall();
    void closeDevice();
    void setActive(bool active);
    bool fail(Failure failure, const QString &message);
    void failWith(const GError *error);
    QString retryText(const GError *error) const;

    // The library's answers, from its main context.
    static void opened(void *source, void *result, void *call);
    static void enrolProgress(FpDevice *device, int stages, void *print, void *call, GError *error);
    static void enrolDone(void *source, void *result, void *call);
    static void identifyDone(void *source, void *result, void *call);
    static void closed(void *source, void *result, void *call);
    static void fingerStatusChanged(void *device, void *property, void *reader);

    State m_state = State::Idle;
    Mode m_mode = Mode::Enrol;
    bool m_active = false;
    bool m_callRunning = false;
    bool m_stopping = false; // cancelled: close when the running call comes back
    bool m_restart = false;  // started again while closing: open once closed
    FpDevice *m_device = nullptr;
    GCancellable *m_cancellable = nullptr;
    unsigned long m_statusHandler = 0;
    std::shared_ptr<LibfprintReader *> m_self; // cleared in the destructor
    std::unique_ptr<LibfprintGallery> m_gallery;
};
