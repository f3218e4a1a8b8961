#pragma once

#include <host/gui/widgets/messagewidget.h>

#include <QDialog>
#include <QScopedPointer>

namespace Ui {
class LoginDialog;
}

// The first window of the studio: login, password and server. It only collects and shows;
// StudioController connects, logs in and loads, and tells the dialog how it went. While that
// runs the fields are locked and a progress line says what is happening; a failure unlocks
// them with the reason, and pressing "Войти" again retries.
class LoginDialog : public QDialog
{
    Q_OBJECT
public:
    explicit LoginDialog(QWidget *parent = nullptr);
    ~LoginDialog() override;

    // The servers offered: the embedded one (may be empty) first, then those used before.
    void setServers(const QString &embedded, const QStringList &recent, const QString &current);
    void setLogin(const QString &login);
    QString login() const;
    QString password() const;
    QString serverText() const;
    QString messageText() const;
    void clearPassword();

    // Locks the fields and shows what is happening; `steps` 0 shows a busy bar.
    void setBusy(const QString &text, int step = 0, int steps = 0);
    // Unlocks the fields and shows a message above them (none if `text` is empty).
    void showMessage(const QString &text, MessageWidget::Icon icon);
    bool isBusy() const { return m_busy; }

signals:
    void loginRequested();
    void quitRequested();

protected:
    void accept() override;
    void reject() override;

private:
    void setFieldsEnabled(bool enabled);
    void updateOkButton();

    QScopedPointer<Ui::LoginDialog> m_ui;
    bool m_busy = false;
};
