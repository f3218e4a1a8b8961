#pragma once

#include <host/gui/wizards/zrwizardpage.h>
#include <shared/taskinfo.h>

#include <QHash>
#include <QString>

#include <memory>

namespace Ui {
class UserPasswordWizardPage;
}

// The password page of the new-user wizard. The operator keeps the installation's default
// password, which the user must then change at his first login, or types or generates one;
// an expiry date is optional. The strength rules are the password widget's: the page only
// remembers its last verdict. On Next it emits one task with the password hash, the change
// obligation and the expiry.
class UserPasswordWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    explicit UserPasswordWizardPage(QWidget *parent = nullptr);
    ~UserPasswordWizardPage() override;

    bool eventFilter(QObject *object, QEvent *event) override;
    void initializePage() override;
    bool validatePage() override;
    bool isComplete() const override;

    // What the task carries, all as text: "PT_PASSHASH", "PT_REQUIRE_CHANGE",
    // "PT_PASSWORD_EXPIRED" (empty for no expiry).
    QHash<QString, QString> properties() const;

signals:
    void appendTask(zeral::TaskInfo task);

private slots:
    void onPassCheckResult(bool pass_check_res);
    void onPasswordGenerated(QString password);
    void onUseDefaultPasswordToggled(bool checked);
    void passwExpireTypeChanged();

private:
    std::unique_ptr<Ui::UserPasswordWizardPage> m_ui;
    // The last verdict of the password widget; a generated password counts as passed.
    bool m_passCheckPassed = false;
};
