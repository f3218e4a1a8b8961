#include "identificationpolicy.h"

#include <host/gui/widgets/zrcombobox.h>

#include <QIcon>

void IdentificationPolicy::fillBox(ZRComboBox *box)
{
    box->addItem(QIcon(), tr("Логин + пароль"), Password);
    box->addItem(QIcon(), tr("Логин + биометрическая информация"), Biometrics);
    box->addItem(QIcon(), tr("Логин + пароль + биометрическая информация"), PasswordBiometrics);
    box->addItem(QIcon(), tr("Авторизация Kerberos"), Kerberos);
}

bool IdentificationPolicy::needsBiometrics(int policy)
{
    return policy == Biometrics || policy == PasswordBiometrics;
}
