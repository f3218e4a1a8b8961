#pragma once

#include <QString>

namespace zeral::email {

// Whether `address` is one plain address (local@domain.tld, ASCII, nothing around it) that a
// mail can go to. The server refuses a "send_email" whose recipient fails it, and the client
// can check an employee's address by the same rule before it asks.
bool isValidAddress(const QString &address);

} // namespace zeral::email
