#pragma once

#include <QDialog>
#include <QString>

#include <memory>

namespace Ui {
class PasswordDialog;
}

// Asks for a new password of a user. The host's PasswordChangeWidget alone decides whether
// the password is good enough; the Ok button follows its verdict. An operator who changes
// his own password must also give the current one, which is checked here against the hash
// kept from his login; for anybody else's password that field isn't shown.
class PasswordDialog : public QDialog
{
    Q_OBJECT
public:
    explicit PasswordDialog(unsigned int uid, QWidget *parent = nullptr);
    ~PasswordDialog() override;

    // The new password, in clear text.
    QString password() const;
    // Whether `uid` is the logged-in operator.
    static bool selfChange(unsigned int uid);

protected:
    // The host widget keeps its list of rules floating beside the window.
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;

private slots:
    void changePassword();
    void onPassCheck(bool ok);
    void oldPasswordEdited();

private:
    unsigned int m_uid = 0;
    std::unique_ptr<Ui::PasswordDialog> m_ui;
};
