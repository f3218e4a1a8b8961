#pragma once

#include <host/gui/widgets/messagewidget.h>

#include <QDialog>
#include <QPointer>

#include <functional>
#include <memory>

namespace Ui {
class LoginLocksDialog;
}
struct Command;
class LoginLocksModel;
class ZRServerInterface;

// The logins the server has locked after failed attempts, with the address they came from,
// and lifting the locks of the chosen rows. Reads the list when it is made and on "Обновить";
// a lifted lock leaves the table as soon as the server has confirmed it. For operators who may
// change users; the server checks that again.
class LoginLocksDialog : public QDialog
{
    Q_OBJECT
public:
    explicit LoginLocksDialog(ZRServerInterface *server, QWidget *parent = nullptr);
    ~LoginLocksDialog() override;

    LoginLocksModel *model() const { return m_model; }
    // Requests sent and not yet answered.
    int pendingCount() const { return m_pending; }

public slots:
    void refresh();
    // Lifts the locks of the selected rows, one request per row.
    void unlockSelected();

signals:
    // The list has been read, or its reading failed.
    void refreshed();
    // Every lock of the last unlockSelected() has been answered.
    void unlockFinished();

private:
    using Answer = std::function<void(Command &answer)>;
    void send(const char *name, const QByteArray &payload, Answer answer);
    void showMessage(const QString &text, MessageWidget::Icon icon);
    void updateButtons();

    std::unique_ptr<Ui::LoginLocksDialog> m_ui;
    QPointer<ZRServerInterface> m_server;
    LoginLocksModel *m_model;
    int m_pending = 0;
    bool m_refreshing = false;
    int m_unlocking = 0; // unlock answers still to come
    QStringList m_unlockFailures;
    int m_unlocked = 0;
};
