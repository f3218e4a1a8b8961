#pragma once

#include <host/gui/models/objecttreeproxy.h>

// The organisation tree of the employees screen, filtered by a search for employees: while a
// text is searched only employees match it, and the firms and departments above a match stay
// as its path. Without a text the whole tree shows, empty departments included.
class EmployeeTreeProxy : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit EmployeeTreeProxy(QObject *parent = nullptr);

    // An empty text shows everything again.
    void searchEmployees(const QString &text);

private:
    bool m_searching = false;
};
