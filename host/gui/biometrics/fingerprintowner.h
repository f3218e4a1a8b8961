#pragma once

#include <shared/types.h>

#include <QString>

// How the fingerprint screens name the owner of a template: a user of the local store by his
// full name and login, an unknown one by his number.
class FingerprintOwner
{
public:
    static QString displayName(zeral::TYPE_ID uid);

    FingerprintOwner() = delete;
};
