#pragma once

#include <shared/objectinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

#include <QString>
#include <QWidget>

#include <memory>

namespace Ui {
class MobileUserProperties;
}

// The first tab of the mobile user dialog. A mobile user has no personal data of his own: the
// tab shows the linked employee read-only and edits only the login and the password's expiry,
// warning while the login differs from the employee's main e-mail address, which is what the
// mobile application logs in with. Changes go to the screen's queue as "save_object" tasks.
class MobileUserProperties : public QWidget
{
    Q_OBJECT
public:
    explicit MobileUserProperties(QWidget *parent = nullptr);
    ~MobileUserProperties() override;

    // The employee a mobile account is linked to, or the empty object when it has none or
    // the store no longer holds him.
    static const zeral::ObjectInfo &linkedWorker(const zeral::ObjectInfo &user);
    // The department path "top,...,lowest" above and including `uid`, at most 99 levels.
    QString depName(unsigned int uid) const;

signals:
    void dataEdited();
    // The login as it stands can't be saved.
    void denyEdit();
    void appendTask(zeral::TaskInfo task);
    void showMessage(QString text);
    // The login was saved.
    void loginChanged(QString login);

public slots:
    void clear();
    void setCurrent(const zeral::ObjectInfo &info);
    void applyChanges();
    void saved(zeral::TYPE_ID uid);
    void passwordSet(zeral::TYPE_ID uid);
    void checkLogin();
    void passwExpireCheckChanged(bool checked);
    void showChangePasswordDialog();
    void checkEmail();

private:
    std::unique_ptr<Ui::MobileUserProperties> m_ui;
    zeral::ObjectInfo m_current;
};
