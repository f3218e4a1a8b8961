#pragma once

#include <QCoreApplication>

class ZRComboBox;

// The ways a user identifies at login: the values of "PT_IDENT_TYPE". There is no policy 3.
class IdentificationPolicy
{
    Q_DECLARE_TR_FUNCTIONS(IdentificationPolicy)
public:
    enum : int {
        Password = 0,
        Biometrics = 1,
        PasswordBiometrics = 2,
        Kerberos = 4,
    };

    // Adds the four policies to the box, in this order, each with an empty icon and its
    // value as item data; items of a form carry no data, so the editors put them in here.
    static void fillBox(ZRComboBox *box);
    // A policy that needs the user's fingerprints.
    static bool needsBiometrics(int policy);

    IdentificationPolicy() = delete;
};
