#pragma once

#include <shared/fingerprintformat.h>
#include <shared/templatedata.h>

#include <QByteArray>
#include <QObject>
#include <QString>

// A fingerprint reader, as the screens that read fingers see it. Enrolment turns a finger,
// read as often as the reader needs, into one template (enrolled()). Identification tells
// whose finger is on the reader among a gallery of stored templates (identified()), finger
// after finger until stop(). Each reader matches the templates of its own format only: it
// knows how its maker compares prints.
class FingerprintReader : public QObject
{
    Q_OBJECT
public:
    // The template format of samples that no real reader made (see SimulatedFingerprintReader).
    static constexpr quint32 SimulatedFormat = zeral::SIMULATED_FINGERPRINT_FORMAT;
    // The format of prints made through libfprint (see LibfprintReader).
    static constexpr quint32 LibfprintFormat = zeral::LIBFPRINT_FINGERPRINT_FORMAT;

    enum class Failure {
        NoDevice,      // no reader is plugged in
        DeviceBusy,    // another program, or another window, reads from it
        DeviceRemoved, // unplugged, or gone while it read
        Other,
    };
    Q_ENUM(Failure)

    explicit FingerprintReader(QObject *parent = nullptr);

    // Both start waiting for fingers; false, with errorOccurred, when the reader can't be used.
    virtual bool startEnrolment() = 0;
    virtual bool startIdentification(const zeral::TEMPLATES_HASH &gallery) = 0;
    virtual void stop() = 0;
    virtual bool isActive() const = 0;
    // True for a reader that only imitates one; the screens say so to the operator.
    virtual bool isSimulated() const = 0;
    // The reader's name for the operator.
    virtual QString name() const = 0;
    // The format of the templates it makes and matches.
    virtual quint32 templateFormat() const = 0;

    // The templates of a gallery this reader can match.
    zeral::TEMPLATES_HASH readableTemplates(const zeral::TEMPLATES_HASH &gallery) const;

    // How the screens name the kind of a stored template for the operator.
    static QString formatName(quint32 format);

signals:
    void enrolled(quint32 format, const QByteArray &templateData);
    // A finger was read: whose it is, 0 when it matches none of the gallery.
    void identified(zeral::TYPE_ID uid);
    // What the person at the reader should do now ("Приложите палец еще раз", ...).
    void progress(const QString &text);
    // The reader waits for a finger to be put on it.
    void fingerWanted();
    void activeChanged(bool active);
    void errorOccurred(FingerprintReader::Failure failure, const QString &message);
};
