#pragma once

#include <shared/objectinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

#include <QHash>
#include <QString>
#include <QVariant>
#include <QWidget>

#include <memory>

namespace Ui {
class UserProperties;
}
class ParameterizedEdit;
class ZRDateEdit;

// The first tab of the user dialog: login, full name, identification policy and password
// expiry of one existing user, with the actions "Сменить пароль" and "Сбросить пароль"
// (carried by the tab for the dialog's tool bar). It sends nothing itself: every change goes
// to the screen's queue as a "save_object" task and comes back as a call of a result slot
// with the user's uid, or 0 when it failed.
class UserProperties : public QWidget
{
    Q_OBJECT
public:
    explicit UserProperties(QWidget *parent = nullptr);
    ~UserProperties() override;

    // What the user editors share, desktop and mobile alike.
    // Gives `loginEdit` a validator that refuses the logins of all users but `uid`.
    static void installLoginValidator(ParameterizedEdit *loginEdit, zeral::TYPE_ID uid);
    static bool isLoginAcceptable(const ParameterizedEdit *loginEdit);
    // Puts a date edit that marks a passed expiry in place of the form's, set to the day a
    // new password would expire by the installation's settings; returns it.
    static ZRDateEdit *replaceExpiryDateEdit(ZRDateEdit *formEdit);
    // The properties that set a password typed by the operator.
    static QHash<QString, QVariant> setPasswordChanges(const QString &password);
    // A "save_object" of `object` carrying `changes`, told back to `method` of `receiver`.
    static zeral::TaskInfo makeSaveTask(QObject *receiver, const zeral::ObjectInfo &object,
                                        const QHash<QString, QVariant> &changes,
                                        const char *method, const QString &startMessage,
                                        const QString &errorMessage);

signals:
    void dataEdited();
    // The login as it stands can't be saved.
    void denyEdit();
    void appendTask(zeral::TaskInfo task);
    void showMessage(QString text);

public slots:
    void clear();
    void setCurrent(const zeral::ObjectInfo &info);
    void applyChanges();
    void saved(zeral::TYPE_ID uid);
    void passwordCleared(zeral::TYPE_ID uid);
    void passwordSet(zeral::TYPE_ID uid);
    // The number of biometric templates of a user; only the current user's is kept.
    void setTemplatesCount(zeral::TYPE_ID uid, int count);

private slots:
    void checkLogin();
    void clearPassword();
    void setPassword();
    void passwExpireCheckChanged(bool checked);
    void identTypeChanged();

private:
    // A "save_object" of the current user carrying `changes`, told back to `method`.
    zeral::TaskInfo makeTask(const QHash<QString, QVariant> &changes, const char *method,
                             const QString &startMessage, const QString &errorMessage);

    std::unique_ptr<Ui::UserProperties> m_ui;
    zeral::ObjectInfo m_current;
    int m_templatesCount = -1; // unknown counts as having templates
};
