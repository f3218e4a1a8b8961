#pragma once

#include <host/gui/wizards/pagelistwizard.h>
#include <host/gui/wizards/zrwizardpage.h>
#include <shared/metatypes.h>
#include <shared/taskinfo.h>

#include <QAbstractButton>
#include <QCryptographicHash>
#include <QList>
#include <QString>
#include <QtTest>

// One page of the new-user wizard in a wizard of its own, with a last page behind it, so that
// Next leaves the page as the wizard does: through validatePage. The tasks the page emits are
// collected in the order they come.
template<class Page>
class PageInWizard
{
public:
    PageInWizard()
        : page(new Page)
        , last(new ZRWizardPage)
    {
        wizard.addPage(page);
        wizard.addPage(last);
        QObject::connect(page, &Page::appendTask, &wizard,
                         [this](const zeral::TaskInfo &task) { tasks.append(task); });
    }

    // Shown, which initializes the page.
    void show()
    {
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
    }
    bool nextEnabled() const { return wizard.button(QWizard::NextButton)->isEnabled(); }
    // Presses Next; false when the wizard stayed on the page.
    bool next()
    {
        wizard.button(QWizard::NextButton)->click();
        return wizard.currentPage() == last;
    }

    // Leaves the page by Next and takes the one task it emitted, checked as a task on the
    // user that the wizard makes.
    void leaveWithOneUserTask(const QString &kind, const QString &method, zeral::TaskInfo *task);

    PageListWizard wizard;
    Page *page;
    ZRWizardPage *last;
    QList<zeral::TaskInfo> tasks;
};

namespace wizardpages {

// Types the text into the widget key by key, as the operator would; Cyrillic too, which the
// key clicks of QtTest can't spell.
inline void type(QWidget *widget, const QString &text)
{
    for (const QChar ch : text)
        QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, QString(ch), Qt::NoModifier);
}

// The client hash of a password as the server expects it, computed here on its own: the
// lower-case hex MD5 of the UTF-8 text.
inline QString md5(const QString &password)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(password.toUtf8(), QCryptographicHash::Md5).toHex());
}

// The widget that Tab leads to from `widget`: the next in the focus chain that takes focus
// by Tab and is not part of `widget` itself.
inline QWidget *nextTabStop(QWidget *widget)
{
    for (QWidget *next = widget->nextInFocusChain(); next && next != widget;
         next = next->nextInFocusChain()) {
        if ((next->focusPolicy() & Qt::TabFocus) && !widget->isAncestorOf(next))
            return next;
    }
    return nullptr;
}

// The "property-" entries of a task, by parameter, as text.
inline QHash<QString, QString> propertiesOf(const zeral::TaskInfo &task)
{
    QHash<QString, QString> properties;
    const QString prefix = QStringLiteral("property-");
    for (auto it = task.data.cbegin(); it != task.data.cend(); ++it) {
        if (it.key().startsWith(prefix))
            properties.insert(it.key().mid(prefix.size()), it.value().toString());
    }
    return properties;
}

// A task on the user the wizard makes: uid 0, "object_type" "OT_USER", parent the integer 0,
// nothing but "property-" entries beside them, each once, and the result to `method` of
// `receiver`.
inline void verifyUserTask(const zeral::TaskInfo &task, const QString &kind,
                           const QObject *receiver, const QString &method)
{
    QCOMPARE(task.type, kind);
    QCOMPARE(task.uid, zeral::TYPE_ID(0));
    QCOMPARE(task.data.values(QStringLiteral("object_type")), QVariantList{"OT_USER"});
    const QVariantList parents = task.data.values(QStringLiteral("parent"));
    QCOMPARE(parents.size(), 1);
    QVERIFY(parents.first().userType() == QMetaType::Int
            || parents.first().userType() == QMetaType::UInt);
    QCOMPARE(parents.first().toInt(), 0);
    for (const QString &key : task.data.uniqueKeys()) {
        QCOMPARE(task.data.values(key).size(), 1);
        QVERIFY2(key == QLatin1String("object_type") || key == QLatin1String("parent")
                     || key.startsWith(QLatin1String("property-")),
                 qPrintable(key));
    }
    QCOMPARE(task.receiver.data(), receiver);
    QCOMPARE(task.method, method);
    QVERIFY(task.dependsOn.isEmpty());
    QVERIFY(task.subtasks.isEmpty());
}

} // namespace wizardpages

template<class Page>
void PageInWizard<Page>::leaveWithOneUserTask(const QString &kind, const QString &method,
                                              zeral::TaskInfo *task)
{
    QVERIFY(next());
    QCOMPARE(tasks.size(), 1);
    *task = tasks.first();
    wizardpages::verifyUserTask(*task, kind, page, method);
}
