#pragma once

#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QTextBrowser>

// The side card of the employees screen: who the selected employee is, where he works, and
// the account linked to him, read from the local store.
class EmployeeCard : public QTextBrowser
{
    Q_OBJECT
public:
    explicit EmployeeCard(QWidget *parent = nullptr);

    // 0 shows a hint instead of a card.
    void showEmployee(zeral::TYPE_ID uid);
    zeral::TYPE_ID employee() const { return m_uid; }
    // Reads the store again for the employee shown.
    void refresh();

    // The account linked to an employee: the parent end of his first link of type 15.
    static zeral::TYPE_ID linkedUser(const zeral::ObjectInfo &employee);

private:
    zeral::TYPE_ID m_uid = 0;
};
