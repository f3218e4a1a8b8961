#pragma once

#include <shared/taskinfo.h>

#include <QHash>
#include <QString>

class QObject;

// The tasks of the new-user wizard's pages on the user that the wizard makes. The user doesn't
// exist while the pages are filled in, so every task carries uid 0; the wizard's progress page
// puts in the uid that the creation reports before it releases the tasks after it.
class NewUserTask
{
public:
    // A "create_object" or "save_object" of a user, with the properties each under
    // "property-<key>" as text, parent 0, told back to `method` of `receiver`. The start and
    // error texts are filled with the user's name as those properties give it.
    static zeral::TaskInfo objectTask(const QString &kind,
                                      const QHash<QString, QString> &properties, QObject *receiver,
                                      const QString &method, const QString &startMessage,
                                      const QString &errorMessage);

    NewUserTask() = delete;
};
