#include "fingerprintenrolmentdialog.h"

#include "screenslogging.h"
#include "ui_fingerprintenrolmentdialog.h"

#include <host/core/protocol.h>
#include <host/gui/biometrics/fingerprintowner.h>
#include <host/gui/biometrics/fingerprintreaderfactory.h>
#include <host/gui/biometrics/simulatedfingerprintpanel.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>

namespace {
// Where a finger's number is kept on its row.
constexpr int FingerRole = Qt::UserRole;
} // namespace

FingerprintEnrolmentDialog::FingerprintEnrolmentDialog(ZRServerInterface *server,
                                                       zeral::TYPE_ID uid,
                                                       FingerprintReader *reader, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::FingerprintEnrolmentDialog>())
    , m_client(new FingerprintClient(server, this))
    , m_uid(uid)
{
    m_ui->setupUi(this);
    const QString owner = FingerprintOwner::displayName(uid);
    setWindowTitle(tr("Отпечатки пальцев: %1").arg(owner));
    m_ui->titleLabel->setText(owner);
    QFont titleFont = m_ui->titleLabel->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.2);
    m_ui->titleLabel->setFont(titleFont);
    m_ui->messageLine->setCloseButtonVisible(false);
    m_ui->messageLine->hide();

    for (int finger = 0; finger < FingerCount; ++finger) {
        auto *item = new QTreeWidgetItem(m_ui->fingerTree, {fingerName(finger), QString()});
        item->setData(0, FingerRole, finger);
    }
    m_ui->fingerTree->resizeColumnToContents(0);

    m_noticeLabel = new QLabel(m_ui->readerBox);
    m_noticeLabel->setObjectName(QStringLiteral("readerNotice"));
    m_noticeLabel->setWordWrap(true);
    m_noticeLabel->setStyleSheet(
        QStringLiteral("QLabel { background: #fff4ce; color: #5c4400; border: 1px solid #e6c65c;"
                       " border-radius: 3px; padding: 6px 8px; }"));
    m_noticeLabel->hide();
    m_ui->readerLayout->insertWidget(0, m_noticeLabel);
    QString notice;
    if (!reader)
        reader = FingerprintReaderFactory::create(this, &notice);
    useReader(reader);
    m_noticeLabel->setText(notice);
    m_noticeLabel->setVisible(!notice.isEmpty());

    connect(m_ui->scanButton, &QPushButton::clicked, this, &FingerprintEnrolmentDialog::startScan);
    connect(m_ui->cancelScanButton, &QPushButton::clicked, this,
            &FingerprintEnrolmentDialog::cancelScan);
    connect(m_ui->removeButton, &QPushButton::clicked, this,
            &FingerprintEnrolmentDialog::removeSelectedFinger);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this,
            &FingerprintEnrolmentDialog::reject);
    connect(m_ui->fingerTree, &QTreeWidget::currentItemChanged, this,
            &FingerprintEnrolmentDialog::updateControls);
    connect(m_ui->fingerTree, &QTreeWidget::itemActivated, this,
            &FingerprintEnrolmentDialog::startScan);

    m_ui->fingerTree->setCurrentItem(fingerItem(1)); // the right index finger comes first
    loadFingers();
}

FingerprintEnrolmentDialog::~FingerprintEnrolmentDialog()
{
    m_reader->stop();
}

void FingerprintEnrolmentDialog::useReader(FingerprintReader *reader)
{
    if (m_reader) {
        m_reader->stop();
        m_reader->disconnect(this);
        m_reader->deleteLater(); // it may be the one calling us now
    }
    delete m_simulatedPanel;
    m_simulatedPanel = nullptr;
    m_reader = reader;
    m_reader->setParent(this);
    // The simulated reader's name already says what it is.
    m_ui->readerNameLabel->setText(m_reader->name());
    if (auto *simulated = qobject_cast<SimulatedFingerprintReader *>(m_reader)) {
        m_simulatedPanel = new SimulatedFingerprintPanel(m_ui->readerBox);
        m_simulatedPanel->setObjectName(QStringLiteral("simulatedPanel"));
        m_simulatedPanel->setReader(simulated);
        m_ui->readerLayout->addWidget(m_simulatedPanel, 1);
    }
    connect(m_reader, &FingerprintReader::enrolled, this,
            &FingerprintEnrolmentDialog::templateEnrolled);
    connect(m_reader, &FingerprintReader::errorOccurred, this,
            &FingerprintEnrolmentDialog::readerFailed);
    connect(m_reader, &FingerprintReader::progress, this, [this](const QString &text) {
        if (m_activity == Activity::WaitingForFinger)
            showMessage(text, MessageWidget::Information);
    });
}

QString FingerprintEnrolmentDialog::readerNotice() const
{
    return m_noticeLabel->isHidden() ? QString() : m_noticeLabel->text();
}

QList<qint32> FingerprintEnrolmentDialog::enrolledFingers() const
{
    QList<qint32> fingers = m_enrolled.values();
    std::sort(fingers.begin(), fingers.end());
    return fingers;
}

int FingerprintEnrolmentDialog::selectedFinger() const
{
    const QTreeWidgetItem *item = m_ui->fingerTree->currentItem();
    return item ? item->data(0, FingerRole).toInt() : -1;
}

QString FingerprintEnrolmentDialog::fingerName(int finger)
{
    switch (finger) {
    case 0:
        return tr("Правый большой");
    case 1:
        return tr("Правый указательный");
    case 2:
        return tr("Правый средний");
    case 3:
        return tr("Правый безымянный");
    case 4:
        return tr("Правый мизинец");
    case 5:
        return tr("Левый большой");
    case 6:
        return tr("Левый указательный");
    case 7:
        return tr("Левый средний");
    case 8:
        return tr("Левый безымянный");
    case 9:
        return tr("Левый мизинец");
    default:
        return tr("Палец №%1").arg(finger);
    }
}

void FingerprintEnrolmentDialog::loadFingers()
{
    setActivity(Activity::Loading);
    showMessage(tr("Загрузка сведений об отпечатках..."), MessageWidget::Information);
    m_client->getUserFingers(m_uid, [this](const FingerprintClient::Outcome &outcome,
                                           const QList<qint32> &fingers,
                                           const QHash<qint32, quint32> &formats) {
        m_fingersKnown = outcome.isOk();
        m_formats = formats;
        m_enrolled.clear();
        for (qint32 finger : fingers) {
            if (finger >= 0 && finger < FingerCount)
                m_enrolled.insert(finger);
        }
        for (int finger = 0; finger < FingerCount; ++finger)
            updateFingerRow(finger);
        setActivity(Activity::Idle);
        if (outcome.isOk()) {
            showMessage(tr("Выберите палец и нажмите «Сканировать»."), MessageWidget::Information);
        } else {
            showMessage(failureText(tr("Не удалось узнать, какие отпечатки сохранены"), outcome),
                        MessageWidget::Critical);
        }
    });
}

void FingerprintEnrolmentDialog::startScan()
{
    const int finger = selectedFinger();
    if (m_activity != Activity::Idle || finger < 0)
        return;
    m_scannedFinger = finger;
    setActivity(Activity::WaitingForFinger);
    if (!m_reader->startEnrolment()) {
        // The reader has said why through errorOccurred; make sure the screen is free again.
        if (m_activity == Activity::WaitingForFinger) {
            setActivity(Activity::Idle);
            showMessage(tr("Сканер не запустился. Проверьте его подключение и повторите."),
                        MessageWidget::Critical);
        }
        return;
    }
    showMessage(tr("Приложите палец «%1» к сканеру.").arg(fingerName(finger)),
                MessageWidget::Information);
}

void FingerprintEnrolmentDialog::cancelScan()
{
    if (m_activity != Activity::WaitingForFinger)
        return;
    m_reader->stop();
    setActivity(Activity::Idle);
    showMessage(tr("Сканирование прервано."), MessageWidget::Information);
}

void FingerprintEnrolmentDialog::templateEnrolled(quint32 format, const QByteArray &sample)
{
    if (m_activity != Activity::WaitingForFinger)
        return;
    m_reader->stop();
    const int finger = m_scannedFinger;
    setActivity(Activity::Saving);
    showMessage(tr("Сохранение отпечатка пальца «%1»...").arg(fingerName(finger)),
                MessageWidget::Information);
    m_client->enrolFinger(
        m_uid, finger, format, sample,
        [this, finger, format](const FingerprintClient::Outcome &outcome) {
            setActivity(Activity::Idle);
            if (!outcome.isOk()) {
                showMessage(failureText(tr("Отпечаток не сохранен"), outcome),
                            MessageWidget::Critical);
                return;
            }
            m_enrolled.insert(finger);
            m_formats.insert(finger, format);
            updateFingerRow(finger);
            updateControls();
            showMessage(tr("Отпечаток пальца «%1» сохранен.").arg(fingerName(finger)),
                        MessageWidget::Positive);
        });
}

void FingerprintEnrolmentDialog::readerFailed(FingerprintReader::Failure failure,
                                              const QString &message)
{
    qCWarning(lcStudioScreens) << "fingerprint reader failed:" << failure << message;
    const bool scanning = m_activity == Activity::WaitingForFinger;
    if (scanning) {
        m_reader->stop();
        setActivity(Activity::Idle);
    }
    if (m_reader->isSimulated() || !FingerprintReaderFactory::fallsBack(failure)) {
        showMessage(tr("Ошибка сканера: %1").arg(message), MessageWidget::Critical);
        return;
    }
    // The real reader is missing, busy or gone: the simulated one stands in, said plainly.
    m_noticeLabel->setText(FingerprintReaderFactory::fallbackNotice(message));
    m_noticeLabel->show();
    useReader(new SimulatedFingerprintReader(this));
    showMessage(tr("Ошибка сканера: %1 Отпечаток можно снять имитацией сканера: нажмите "
                   "«Сканировать» еще раз.")
                    .arg(message),
                MessageWidget::Warning);
}

void FingerprintEnrolmentDialog::removeSelectedFinger()
{
    const int finger = selectedFinger();
    if (m_activity != Activity::Idle || !m_enrolled.contains(finger))
        return;
    // Window-modal and answered through a signal: the dialog may close meanwhile.
    auto *question = new QMessageBox(
        QMessageBox::Question, windowTitle(),
        tr("Удалить отпечаток пальца «%1»? Пользователь не сможет проходить по нему.")
            .arg(fingerName(finger)),
        QMessageBox::Yes | QMessageBox::No, this);
    question->setObjectName(QStringLiteral("removeQuestion"));
    question->setDefaultButton(QMessageBox::No);
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QMessageBox::finished, this, [this, finger](int result) {
        if (result == QMessageBox::Yes)
            removeFinger(finger);
    });
    question->open();
}

void FingerprintEnrolmentDialog::removeFinger(int finger)
{
    if (m_activity != Activity::Idle)
        return;
    m_scannedFinger = finger;
    setActivity(Activity::Saving);
    showMessage(tr("Удаление отпечатка пальца «%1»...").arg(fingerName(finger)),
                MessageWidget::Information);
    m_client->removeFinger(
        m_uid, finger, [this, finger](const FingerprintClient::Outcome &outcome) {
            setActivity(Activity::Idle);
            if (!outcome.isOk()) {
                showMessage(failureText(tr("Отпечаток не удален"), outcome),
                            MessageWidget::Critical);
                return;
            }
            m_enrolled.remove(finger);
            m_formats.remove(finger);
            updateFingerRow(finger);
            updateControls();
            showMessage(tr("Отпечаток пальца «%1» удален.").arg(fingerName(finger)),
                        MessageWidget::Positive);
        });
}

void FingerprintEnrolmentDialog::reject()
{
    m_reader->stop();
    QDialog::reject();
}

void FingerprintEnrolmentDialog::setActivity(Activity activity)
{
    m_activity = activity;
    updateControls();
}

void FingerprintEnrolmentDialog::updateFingerRow(int finger)
{
    QTreeWidgetItem *item = fingerItem(finger);
    if (!item)
        return;
    const bool enrolled = m_enrolled.contains(finger);
    if (!m_fingersKnown && !enrolled) {
        item->setText(1, tr("неизвестно"));
        item->setIcon(1, QIcon());
    } else if (enrolled) {
        // Which kind of reader made it: a simulated template proves nothing about a finger.
        const auto format = m_formats.constFind(finger);
        item->setText(1, format == m_formats.constEnd()
                             ? tr("сохранен")
                             : tr("сохранен (%1)").arg(FingerprintReader::formatName(*format)));
        item->setIcon(1, QIcon::fromTheme(QStringLiteral("action-finger")));
    } else {
        item->setText(1, tr("нет"));
        item->setIcon(1, QIcon());
    }
    QFont font = item->font(0);
    font.setBold(enrolled);
    item->setFont(0, font);
}

void FingerprintEnrolmentDialog::updateControls()
{
    const bool idle = m_activity == Activity::Idle;
    const int finger = selectedFinger();
    m_ui->fingerTree->setEnabled(idle);
    m_ui->scanButton->setEnabled(idle && finger >= 0);
    m_ui->cancelScanButton->setVisible(m_activity == Activity::WaitingForFinger);
    m_ui->removeButton->setEnabled(idle && m_enrolled.contains(finger));
    m_ui->progressBar->setVisible(!idle);
}

void FingerprintEnrolmentDialog::showMessage(const QString &text, MessageWidget::Icon icon)
{
    m_ui->messageLine->setMessageIcon(icon);
    m_ui->messageLine->setText(text);
    m_ui->messageLine->show();
}

QString FingerprintEnrolmentDialog::failureText(const QString &what,
                                                const FingerprintClient::Outcome &outcome) const
{
    switch (outcome.status) {
    case zeral::proto::StatusBiometricRefused:
        return tr("%1: у вас нет права изменять биометрические данные. Попросите администратора "
                  "системы выдать это право.")
            .arg(what);
    case zeral::proto::StatusConnectionLost:
        return tr("%1: нет связи с сервером. Дождитесь восстановления связи и повторите.")
            .arg(what);
    case zeral::proto::StatusNotFound:
        return tr("%1: пользователь или отпечаток не найден на сервере. Возможно, их только что "
                  "удалили; закройте окно и откройте его снова.")
            .arg(what);
    default:
        if (!outcome.text.isEmpty())
            return tr("%1: %2").arg(what, outcome.text);
        return tr("%1: сервер ответил ошибкой %2. Повторите позже.").arg(what).arg(outcome.status);
    }
}

QTreeWidgetItem *FingerprintEnrolmentDialog::fingerItem(int finger) const
{
    return m_ui->fingerTree->topLevelItem(finger);
}
