#pragma once

#include <QDialog>

class PasswordChangeWidget;
class QPushButton;

// Asked once, at the first start of a fresh database: the password of "root", the account
// that can do everything. There is no built-in password to fall back on, so the studio can't
// be used until one is set.
class RootPasswordDialog : public QDialog
{
    Q_OBJECT
public:
    explicit RootPasswordDialog(QWidget *parent = nullptr);

    QString password() const;
    PasswordChangeWidget *passwordWidget() const { return m_password; }

private:
    PasswordChangeWidget *m_password;
    QPushButton *m_okButton;
};
