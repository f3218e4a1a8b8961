#pragma once

#include <src/userpropertiesdialog.h>

#include <QString>

class MobileUserProperties;

// "Свойства пользователя" for a mobile account: the mobile properties tab, the mobile role
// templates only, the permissions tab, and the button "Передать логин/пароль" that hands the
// credentials to the person by e-mail or through the clipboard.
//
// The server keeps only a hash, so an existing password can't be handed out: the first
// hand-over asks for a reset and makes a new password, and every later one in the same dialog
// hands out that same password. It lives in this object only, is never logged or stored, and
// goes with the dialog; the next opening needs a new reset.
class MobileUserPropertiesDialog : public UserPropertiesDialog
{
    Q_OBJECT
public:
    explicit MobileUserPropertiesDialog(QWidget *parent = nullptr);

    void initTabs() override;

    MobileUserProperties *mobilePropertiesPage() const { return mobilePropertiesTab; }

public slots:
    void sendPasswordByEmail();
    void savePasswordToClipboard();
    void passwordSaved(zeral::TYPE_ID uid);
    void messageSent(zeral::TYPE_ID uid);
    void setLogin(QString login);

protected:
    void initRolesTab() override;
    void initMobilePropertiesTab();
    void initActions();
    // Asks, then makes a new password and queues its hash; true when a reset was started.
    bool updateUserPassword();

private:
    // The held password, after a reset if none is held yet; empty when the operator refused.
    bool ensurePassword();
    // After a refused reset every hand-over says that the password won't let anybody in.
    void warnIfResetRefused();

    MobileUserProperties *mobilePropertiesTab = nullptr;
    QString generatedPassword;
    bool resetRefused = false;
};
