#pragma once

#include <tests/support/builders.h>

#include <src/wizards/mobileusercheckmodel.h>
#include <src/wizards/mobileuserchekwizardpage.h>
#include <src/wizards/mobileuserselectwizardpage.h>
#include <src/wizards/newmobileuserwizard.h>

#include <host/core/localstorage.h>
#include <shared/inheritdata.h>
#include <shared/metatypes.h>

#include <QAbstractButton>
#include <QtTest>

// An organisation as the store holds it: firms and departments in "orgstructure", employees
// in "subject" under their departments. The awkward employees are there on purpose: one
// without an address, one whose address is blanks, one who has an account already, and a
// department ("Склад") where nobody can be chosen.
namespace mobilefixture {

using zeral::TYPE_ID;

enum : TYPE_ID {
    Root = 1,
    Firm = 2,
    Sales = 3,
    SalesEast = 4,
    Stock = 5,
    Ivanov = 10,   // in SalesEast, nested two levels below the firm
    Petrov = 11,   // in Sales
    Sidorov = 12,  // no address
    Blank = 13,    // an address of blanks
    Linked = 14,   // has an account
    Storeman = 15, // the only one in Stock, no address
    Kuznetsov = 16,
};

inline zeral::ObjectInfo unit(TYPE_ID uid, const char *type, const QString &name, TYPE_ID parent)
{
    return testing::makeObject(uid, QLatin1String(type), {{QStringLiteral("PT_NAME"), name}},
                               parent);
}

inline zeral::ObjectInfo worker(TYPE_ID uid, const QString &surname, TYPE_ID department,
                                const QString *email)
{
    zeral::ObjectInfo object = testing::makeWorker(uid, surname, QStringLiteral("Имя"));
    object.parent = department;
    if (email)
        object.parameters.insert(QStringLiteral("PT_EMAIL"), *email);
    return object;
}

inline QString emailOf(TYPE_ID uid)
{
    return zeral::LocalStorage::instance()
        ->constObject(uid, QStringLiteral("subject"))
        .parameters.value(QStringLiteral("PT_EMAIL"));
}

inline void fillStore()
{
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    store->clear();
    store->applyChanged(QStringLiteral("orgstructure"),
                        {unit(Root, "OT_SUBJECTROOT", "Организация", 0),
                         unit(Firm, "OT_FIRM", "ООО Ромашка", Root),
                         unit(Sales, "OT_DEPARTMENT", "Отдел продаж", Firm),
                         unit(SalesEast, "OT_DEPARTMENT", "Продажи Восток", Sales),
                         unit(Stock, "OT_DEPARTMENT", "Склад", Firm)});
    const QString ivanov = QStringLiteral("ivanov@romashka.ru");
    const QString petrov = QStringLiteral("petrov@romashka.ru");
    const QString blanks = QStringLiteral("   ");
    const QString linked = QStringLiteral("linked@romashka.ru");
    const QString kuznetsov = QStringLiteral("kuznetsov@romashka.ru");
    zeral::ObjectInfo withAccount = worker(Linked, QStringLiteral("Связанов"), Sales, &linked);
    zeral::_INHERIT_DATA link;
    link.parent = 900;
    link.child = Linked;
    link.linkType = zeral::INHERIT_WORKER_USER;
    withAccount.parents.insert(zeral::INHERIT_WORKER_USER, link);
    store->applyChanged(QStringLiteral("subject"),
                        {worker(Ivanov, QStringLiteral("Иванов"), SalesEast, &ivanov),
                         worker(Petrov, QStringLiteral("Петров"), Sales, &petrov),
                         worker(Sidorov, QStringLiteral("Сидоров"), Sales, nullptr),
                         worker(Blank, QStringLiteral("Пробелов"), Sales, &blanks), withAccount,
                         worker(Storeman, QStringLiteral("Кладовщиков"), Stock, nullptr),
                         worker(Kuznetsov, QStringLiteral("Кузнецов"), Sales, &kuznetsov)});
}

// Presses Next and returns the id of the page the wizard stands on then.
inline int next(QWizard *wizard)
{
    wizard->button(QWizard::NextButton)->click();
    return wizard->currentId();
}

} // namespace mobilefixture
