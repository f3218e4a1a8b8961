#include "guipassfuncs.h"

#include <host/core/localstorage.h>
#include <shared/dbkeys.h>

#include <QRandomGenerator>

#include <algorithm>

const QString GUIPassFuncs::MinLength = QStringLiteral("minLength");
const QString GUIPassFuncs::RequireUpper = QStringLiteral("requireUpper");
const QString GUIPassFuncs::RequireLower = QStringLiteral("requireLower");
const QString GUIPassFuncs::RequireDigit = QStringLiteral("requireDigit");
const QString GUIPassFuncs::RequireSpecial = QStringLiteral("requireSpecial");

namespace {

// Letters and digits that can't be mistaken for one another when read aloud or retyped.
const QString UpperChars = QStringLiteral("ABCDEFGHJKLMNPQRSTUVWXYZ");
const QString LowerChars = QStringLiteral("abcdefghijkmnopqrstuvwxyz");
const QString DigitChars = QStringLiteral("23456789");
const QString SpecialChars = QStringLiteral("!#$%&*+-=?@_");

bool flag(const QHash<QString, QString> &parameters, const char *key, bool defaultValue)
{
    const QString text = parameters.value(QLatin1String(key)).trimmed().toLower();
    if (text == QLatin1String("1") || text == QLatin1String("true") || text == QLatin1String("yes"))
        return true;
    if (text == QLatin1String("0") || text == QLatin1String("false") || text == QLatin1String("no"))
        return false;
    return defaultValue; // missing, or nothing we can read
}

bool isSpecial(QChar c)
{
    return !c.isLetterOrNumber() && !c.isSpace();
}

QChar pick(const QString &alphabet, QRandomGenerator *random)
{
    return alphabet.at(int(random->bounded(quint32(alphabet.size()))));
}

} // namespace

QMap<QString, QVariant> GUIPassFuncs::getPasswordOptions()
{
    return optionsFromParameters(zeral::LocalStorage::instance()->dbSettings().parameters);
}

QMap<QString, QVariant>
GUIPassFuncs::optionsFromParameters(const QHash<QString, QString> &parameters)
{
    namespace d = db::database;
    bool ok = false;
    int minLength = parameters.value(QLatin1String(d::PASSWORD_MIN_LENGTH)).trimmed().toInt(&ok);
    if (!ok)
        minLength = DefaultMinLength;
    return {
        {MinLength, qBound(1, minLength, MaxLength)},
        {RequireUpper, flag(parameters, d::PASSWORD_REQUIRE_UPPER, true)},
        {RequireLower, flag(parameters, d::PASSWORD_REQUIRE_LOWER, true)},
        {RequireDigit, flag(parameters, d::PASSWORD_REQUIRE_DIGIT, true)},
        {RequireSpecial, flag(parameters, d::PASSWORD_REQUIRE_SPECIAL, false)},
    };
}

QString GUIPassFuncs::generatePassword(const QMap<QString, QVariant> &options)
{
    QRandomGenerator *random = QRandomGenerator::system();
    const int minLength = qBound(1, options.value(MinLength, DefaultMinLength).toInt(), MaxLength);
    const int length = qMax(minLength, GeneratedMinLength);

    QString alphabet = UpperChars + LowerChars + DigitChars;
    QString password;
    if (options.value(RequireUpper).toBool())
        password += pick(UpperChars, random);
    if (options.value(RequireLower).toBool())
        password += pick(LowerChars, random);
    if (options.value(RequireDigit).toBool())
        password += pick(DigitChars, random);
    if (options.value(RequireSpecial).toBool()) {
        password += pick(SpecialChars, random);
        alphabet += SpecialChars;
    }
    while (password.size() < length)
        password += pick(alphabet, random);

    // The required characters went first; shuffle them into random places.
    for (int i = password.size() - 1; i > 0; --i) {
        const int j = int(random->bounded(quint32(i + 1)));
        const QChar c = password.at(i);
        password[i] = password.at(j);
        password[j] = c;
    }
    return password;
}

QStringList GUIPassFuncs::unmetCriteria(const QString &password,
                                        const QMap<QString, QVariant> &options)
{
    const auto has = [&password](bool (*test)(QChar)) {
        return std::any_of(password.cbegin(), password.cend(), test);
    };
    QStringList unmet;
    // The same bounds as the generator's: no policy asks for more than MaxLength.
    if (password.size() < qBound(1, options.value(MinLength, DefaultMinLength).toInt(), MaxLength))
        unmet.append(MinLength);
    if (options.value(RequireUpper).toBool() && !has([](QChar c) { return c.isUpper(); }))
        unmet.append(RequireUpper);
    if (options.value(RequireLower).toBool() && !has([](QChar c) { return c.isLower(); }))
        unmet.append(RequireLower);
    if (options.value(RequireDigit).toBool() && !has([](QChar c) { return c.isDigit(); }))
        unmet.append(RequireDigit);
    if (options.value(RequireSpecial).toBool() && !has(isSpecial))
        unmet.append(RequireSpecial);
    return unmet;
}

QString GUIPassFuncs::getDBParameterByName(const QString &key)
{
    return zeral::LocalStorage::instance()->dbSettings().parameters.value(key);
}
