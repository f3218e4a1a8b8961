#include "loginlocksdialog.h"

#include "loginlocksmodel.h"
#include "ui_loginlocksdialog.h"

#include <host/core/authdata.h>
#include <host/core/command.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/wire.h>

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLoggingCategory>
#include <QPushButton>
#include <QTimer>

Q_LOGGING_CATEGORY(lcLoginLocks, "zr.studio.loginlocks")

namespace proto = zeral::proto;

LoginLocksDialog::LoginLocksDialog(ZRServerInterface *server, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::LoginLocksDialog>())
    , m_server(server)
    , m_model(new LoginLocksModel(this))
{
    m_ui->setupUi(this);
    m_ui->messageLine->setCloseButtonVisible(false);
    m_ui->messageLine->setWordWrap(true);
    m_ui->messageLine->hide();
    m_ui->refreshButton->setIcon(QIcon::fromTheme(QStringLiteral("action-update")));
    m_ui->unlockButton->setIcon(QIcon::fromTheme(QStringLiteral("action-unlock")));
    m_ui->locksView->setModel(m_model);
    m_ui->locksView->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_ui->locksView->horizontalHeader()->setStretchLastSection(true);

    connect(m_ui->refreshButton, &QPushButton::clicked, this, &LoginLocksDialog::refresh);
    connect(m_ui->unlockButton, &QPushButton::clicked, this, &LoginLocksDialog::unlockSelected);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &LoginLocksDialog::reject);
    connect(m_ui->locksView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { updateButtons(); });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { updateButtons(); });
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, [this] { updateButtons(); });
    refresh();
}

LoginLocksDialog::~LoginLocksDialog()
{
    // Answers that come after us must not reach a dialog that is gone.
    if (m_server)
        m_server->cancelCallbacks(this);
}

void LoginLocksDialog::refresh()
{
    if (m_refreshing)
        return;
    m_refreshing = true;
    updateButtons();
    send(proto::command::LoginLocks, {}, [this](Command &answer) {
        m_refreshing = false;
        if (answer.status != proto::StatusOk) {
            showMessage(tr("Не удалось получить список заблокированных входов: %1 "
                           "Нажмите «Обновить», чтобы повторить.")
                            .arg(answer.errorText()),
                        MessageWidget::Critical);
            updateButtons();
            emit refreshed();
            return;
        }
        QList<zeral::LoginLockInfo> locks;
        QDateTime serverClock;
        ZRDataStream in(answer.data);
        zeral::wire::readList(in, locks);
        in >> serverClock;
        if (in.status() != QDataStream::Ok) {
            qCWarning(lcLoginLocks) << "unreadable list of locked logins";
            showMessage(tr("Сервер прислал нечитаемый список заблокированных входов. Обновите "
                           "студию до версии сервера."),
                        MessageWidget::Critical);
            updateButtons();
            emit refreshed();
            return;
        }
        m_model->setLocks(locks);
        if (locks.isEmpty())
            showMessage(tr("Заблокированных входов нет."), MessageWidget::Information);
        else
            m_ui->messageLine->hide();
        updateButtons();
        emit refreshed();
    });
}

void LoginLocksDialog::unlockSelected()
{
    if (m_unlocking > 0)
        return;
    QList<zeral::LoginLockInfo> chosen;
    for (const QModelIndex &row : m_ui->locksView->selectionModel()->selectedRows())
        chosen.append(m_model->lock(row.row()));
    if (chosen.isEmpty())
        return;
    m_unlocking = chosen.size();
    m_unlocked = 0;
    m_unlockFailures.clear();
    updateButtons();
    for (const zeral::LoginLockInfo &lock : qAsConst(chosen)) {
        const QString login = lock.login;
        const QString address = lock.address;
        send(proto::command::UnlockLogin, ZRDataStream::pack(login, address),
             [this, login, address](Command &answer) {
                 --m_unlocking;
                 if (answer.status == proto::StatusOk) {
                     ++m_unlocked;
                     m_model->removeLocks(login, address);
                 } else {
                     if (answer.status == proto::StatusNotFound)
                         m_model->removeLocks(login, address); // lifted or run out meanwhile
                     m_unlockFailures.append(
                         tr("«%1» (%2): %3").arg(login, address, answer.errorText()));
                 }
                 if (m_unlocking > 0)
                     return;
                 if (m_unlockFailures.isEmpty()) {
                     showMessage(tr("Снято блокировок: %1. С этих адресов снова можно "
                                    "войти.")
                                     .arg(m_unlocked),
                                 MessageWidget::Positive);
                 } else {
                     showMessage(tr("Не удалось снять блокировку: %1")
                                     .arg(m_unlockFailures.join(QLatin1Char(' '))),
                                 MessageWidget::Critical);
                 }
                 updateButtons();
                 emit unlockFinished();
             });
    }
}

void LoginLocksDialog::send(const char *name, const QByteArray &payload, Answer answer)
{
    if (!m_server) {
        // The studio has torn its connection down: fail as a lost connection does, later.
        QTimer::singleShot(0, this, [answer] {
            Command failure;
            failure.status = proto::StatusConnectionLost;
            failure.data = ZRDataStream::pack(tr("Нет соединения с сервером."));
            answer(failure);
        });
        return;
    }
    Command request = Command::named(QLatin1String(name), AuthData::sessionId());
    request.data = payload;
    ++m_pending;
    m_server->send(
        request,
        [this, answer](Command &reply) {
            --m_pending;
            if (reply.status != proto::StatusOk)
                qCDebug(lcLoginLocks)
                    << reply.name << "refused" << reply.status << reply.errorText();
            answer(reply);
        },
        this);
}

void LoginLocksDialog::showMessage(const QString &text, MessageWidget::Icon icon)
{
    m_ui->messageLine->setMessageIcon(icon);
    m_ui->messageLine->setText(text);
    m_ui->messageLine->show();
}

void LoginLocksDialog::updateButtons()
{
    m_ui->refreshButton->setEnabled(!m_refreshing);
    m_ui->unlockButton->setEnabled(m_unlocking == 0
                                   && m_ui->locksView->selectionModel()->hasSelection());
}
