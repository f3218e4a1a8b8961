#include "emailaddress.h"

#include <QRegularExpression>

namespace zeral::email {

bool isValidAddress(const QString &address)
{
    // A dot-atom before the "@", host names of letters, digits and inner hyphens after it,
    // at least two labels; the lengths SMTP allows.
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QStringLiteral("[A-Za-z0-9!#$%&'*+/=?^_`{|}~-]+(\\.[A-Za-z0-9!#$%&'*+/=?^_`{|}~-]+)*"
                       "@([A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?\\.)+[A-Za-z0-9]([A-Za-z0-9-]{"
                       "0,61}[A-Za-z0-9])?")));
    return address.size() <= 254 && address.indexOf(QLatin1Char('@')) <= 64
           && pattern.match(address).hasMatch();
}

} // namespace zeral::email
