#pragma once

#include "fingerprintreader.h"

#include <shared/templatedata.h>

#include <QList>
#include <QMap>
#include <QSet>
#include <QWidget>

class FingerprintReader;
class QLabel;
class QListWidget;
class SimulatedFingerprintPanel;

// Confirmation of a change by the fingerprints of people who may grant it.
//
// A grant variant is one way of granting: a text, a number, and how many people it needs. Each
// place of a variant (0 up to that count) has the uids who may fill it; a place given no uids
// of its own may be filled by anybody allowed in any place of the variant. The change is
// granted when one variant has all its places filled by distinct identified people.
//
// The widget stays disabled until start(), which starts the reader identifying against the
// templates. The reader is the one FingerprintReaderFactory gives; each reader matches the
// templates of its own format. When a real reader is missing, busy or unplugged the widget
// reads through a SimulatedFingerprintReader, and says so.
class AuthorizationWidget : public QWidget
{
    Q_OBJECT
public:
    explicit AuthorizationWidget(QWidget *parent = nullptr);
    ~AuthorizationWidget() override;

    // Reads through another reader from now on; the widget takes it over.
    void setReader(FingerprintReader *reader);
    FingerprintReader *reader() const { return m_reader; }
    // Why the simulated reader stands in for a real one; empty when it doesn't.
    QString readerNotice() const;
    QString statusText() const;

    bool isGranted() const { return m_granted; }
    // The distinct people identified since start(), in the order they came.
    QList<zeral::TYPE_ID> identifiedUids() const { return m_identified; }

public slots:
    void setTemplates(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);
    void addGrantVariant(QString name, int variant, int count);
    void setGrantedUids(int variant, int index, QList<zeral::TYPE_ID> uids);
    void start();

signals:
    // After every reading and whenever the verdict changes: whether the change is granted.
    void granted(bool granted);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct GrantVariant
    {
        QString name;
        int count = 1;
        QMap<int, QSet<zeral::TYPE_ID>> places;
    };

    void fingerIdentified(zeral::TYPE_ID uid);
    void readerFailed(FingerprintReader::Failure failure, const QString &message);
    void startReader();
    void showNotice(const QString &text);
    QSet<zeral::TYPE_ID> allowedIn(const GrantVariant &variant, int place) const;
    QSet<zeral::TYPE_ID> allowedAnywhere() const;
    int filledPlaces(const GrantVariant &variant) const;
    void evaluate(bool announce);
    void showStatus(const QString &text, bool problem = false);
    void updateVariantList();

    FingerprintReader *m_reader = nullptr;
    zeral::TEMPLATES_HASH m_templates;
    QMap<int, GrantVariant> m_variants;
    QList<zeral::TYPE_ID> m_identified;
    bool m_granted = false;
    bool m_started = false;

    QLabel *m_noticeLabel;
    QLabel *m_iconLabel;
    QLabel *m_statusLabel;
    QListWidget *m_variantList;
    QListWidget *m_identifiedList;
    SimulatedFingerprintPanel *m_simulatedPanel;
};
