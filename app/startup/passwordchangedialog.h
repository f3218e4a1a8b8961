#pragma once

#include <QDialog>
#include <QMap>
#include <QVariant>

class MessageWidget;
class PasswordChangeWidget;
class QPushButton;

// Asked when the server lets an operator in only with a new password (an administrator reset
// it, or it expired): the server's reason above, the new password's fields under the
// installation's policy, and the server's refusal of a try below them. It only collects and
// shows: "Сменить пароль" emits changeRequested and the dialog stays open, locked, until
// StudioController says how it went.
class PasswordChangeDialog : public QDialog
{
    Q_OBJECT
public:
    explicit PasswordChangeDialog(const QString &login, QWidget *parent = nullptr);

    void setReason(const QString &reason);
    void setPasswordOptions(const QMap<QString, QVariant> &options);
    QString password() const;
    PasswordChangeWidget *passwordWidget() const { return m_password; }
    QString reasonText() const;
    QString refusalText() const;

    // Locks the fields while the server answers.
    void setBusy(bool busy);
    // Unlocks the fields and says why the server refused the new password.
    void showRefusal(const QString &text);

signals:
    void changeRequested();

public slots:
    void accept() override;

private:
    void updateOkButton();

    MessageWidget *m_reason;
    PasswordChangeWidget *m_password;
    MessageWidget *m_refusal;
    QPushButton *m_okButton;
    bool m_busy = false;
};
