#include "employeetreeproxy.h"

#include <host/gui/models/itemroles.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

EmployeeTreeProxy::EmployeeTreeProxy(QObject *parent)
    : ObjectTreeProxy(parent)
{
    setSearchEnabled(true);
    setSearchByWordsEnabled(true);
    // Names, personnel numbers and e-mail addresses, as the model prepares them.
    setSearchIndex(QLatin1String(zeral::SUBJECT_DATANAME));
    setTypeFilterKeepsContainers(true);
    setReadOnly(true);
    setSortRole(ItemRoles::SortText);
    setSortCaseSensitivity(Qt::CaseInsensitive);
}

void EmployeeTreeProxy::searchEmployees(const QString &text)
{
    const QString trimmed = text.trimmed();
    const bool searching = !trimmed.isEmpty();
    if (searching != m_searching) {
        m_searching = searching;
        setObjectTypeFilter(searching ? QStringList{QLatin1String(db::orgstructure::WORKER)}
                                      : QStringList());
    }
    setFilter(trimmed);
}
