#pragma once

#include <host/core/localstorage.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpression>
#include <QStandardItemModel>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QWizardPage>

#include <dlfcn.h>

// Finds the operator texts of a window that are still in Russian: labels, buttons, actions
// and their tooltips, group and page titles, tab texts, placeholders, window titles, column
// headers, menu titles and the entries of plain combo boxes. Data is not
// the operator's text: the cells of item views are not read, and every value of the store
// (names of people, departments, objects) is cut out of a text before it is judged.
class RussianTextFinder
{
public:
    struct Finding
    {
        QString path; // the object and its parents, "MainWindow/QMenuBar/QMenu#studio"
        QString text;
        bool usersScreen = false; // shown by the users screen's plugin
        bool hostWidget = false;  // of a widget of the host libraries, the nearest of ours
    };

    RussianTextFinder()
    {
        const zeral::LocalStorage *store = zeral::LocalStorage::instance();
        for (const QString &dataname : store->datanames()) {
            for (const zeral::ObjectInfo &object : store->constObjects(dataname)) {
                for (const QString &value : object.parameters) {
                    if (value.contains(cyrillic()))
                        m_data.append(value);
                }
            }
        }
        // Longer values first, so that a name is cut out whole before a part of it.
        std::sort(m_data.begin(), m_data.end(),
                  [](const QString &a, const QString &b) { return a.size() > b.size(); });
    }

    QList<Finding> find(QWidget *window) const
    {
        QList<Finding> findings;
        QList<QObject *> objects{window};
        for (QObject *child : window->findChildren<QObject *>())
            objects.append(child);
        for (QObject *object : qAsConst(objects)) {
            for (const QString &text : textsOf(object)) {
                if (isRussian(text))
                    findings.append(findingOf(object, text));
            }
        }
        return findings;
    }

    // A text that `object` shows, though not as one of the properties read here.
    static Finding findingOf(QObject *object, const QString &text)
    {
        return {pathOf(object), text, isUsersScreen(object), isHostWidget(object)};
    }

    bool isRussian(QString text) const
    {
        for (const QString &value : m_data)
            text.remove(value);
        return text.contains(cyrillic());
    }

    static QStringList describe(const QList<Finding> &findings)
    {
        QStringList lines;
        for (const Finding &finding : findings)
            lines.append(finding.path + QLatin1String(": ") + finding.text);
        return lines;
    }

private:
    static const QRegularExpression &cyrillic()
    {
        static const QRegularExpression letters(QStringLiteral("[\\x{0400}-\\x{04FF}]"));
        return letters;
    }

    static QStringList textsOf(QObject *object)
    {
        QStringList texts;
        if (auto *action = qobject_cast<QAction *>(object)) {
            // The languages in the menu are named each in itself.
            if (QLocale(action->data().toString()).language() == QLocale::Russian)
                return texts;
            return {action->text(), action->toolTip(), action->statusTip()};
        }
        auto *widget = qobject_cast<QWidget *>(object);
        if (!widget)
            return texts;
        // A tool button showing an action says what the action says; the action is read.
        auto *toolButton = qobject_cast<QToolButton *>(widget);
        if (toolButton && toolButton->defaultAction())
            return texts;
        texts << widget->toolTip() << widget->statusTip() << widget->whatsThis();
        if (widget->isWindow())
            texts << widget->windowTitle();
        if (auto *label = qobject_cast<QLabel *>(widget))
            texts << label->text();
        if (auto *button = qobject_cast<QAbstractButton *>(widget))
            texts << button->text();
        if (auto *box = qobject_cast<QGroupBox *>(widget))
            texts << box->title();
        if (auto *edit = qobject_cast<QLineEdit *>(widget))
            texts << edit->placeholderText();
        if (auto *menu = qobject_cast<QMenu *>(widget))
            texts << menu->title();
        if (auto *page = qobject_cast<QWizardPage *>(widget))
            texts << page->title() << page->subTitle();
        if (auto *tabs = qobject_cast<QTabBar *>(widget)) {
            for (int i = 0; i < tabs->count(); ++i)
                texts << tabs->tabText(i) << tabs->tabToolTip(i);
        }
        if (auto *tabs = qobject_cast<QTabWidget *>(widget)) {
            for (int i = 0; i < tabs->count(); ++i)
                texts << tabs->tabText(i) << tabs->tabToolTip(i);
        }
        if (auto *combo = qobject_cast<QComboBox *>(widget)) {
            // Entries added one by one are the screen's; a model of the store holds data.
            if (qobject_cast<QStandardItemModel *>(combo->model())) {
                for (int i = 0; i < combo->count(); ++i)
                    texts << combo->itemText(i);
            }
        }
        if (auto *view = qobject_cast<QAbstractItemView *>(widget)) {
            if (QAbstractItemModel *model = view->model()) {
                for (int column = 0; column < model->columnCount(); ++column)
                    texts << model->headerData(column, Qt::Horizontal).toString();
            }
        }
        return texts;
    }

    static QString pathOf(QObject *object)
    {
        QStringList parts;
        for (QObject *o = object; o; o = o->parent()) {
            QString part = QString::fromLatin1(o->metaObject()->className());
            if (!o->objectName().isEmpty())
                part += QLatin1Char('#') + o->objectName();
            parts.prepend(part);
        }
        return parts.join(QLatin1Char('/'));
    }

    // Whether the object is of a class of the users screen's plugin, or one of its parents is
    // and no class of the studio's own (a studio dialog the screen opens) stands between.
    static bool isUsersScreen(QObject *object)
    {
        for (QObject *o = object; o; o = o->parent()) {
            const QString library = libraryOf(o);
            if (library.endsWith(QLatin1String("/libuserctl.so")))
                return true;
            if (!isFramework(library) && !library.contains(QLatin1String("/libzrhost")))
                return false;
        }
        return false;
    }

    static bool isFramework(const QString &library)
    {
        return library.contains(QLatin1String("/libQt5"))
               || library.contains(QLatin1String("/libKF5"));
    }

    static QString libraryOf(const QObject *object)
    {
        Dl_info info{};
        if (!dladdr(object->metaObject(), &info) || !info.dli_fname)
            return QString();
        return QFile::decodeName(info.dli_fname);
    }

    // Whether the nearest object behind `object` whose class is not Qt's or a framework's is
    // one of the host libraries' widgets.
    static bool isHostWidget(QObject *object)
    {
        for (QObject *o = object; o; o = o->parent()) {
            const QString library = libraryOf(o);
            if (isFramework(library))
                continue;
            return library.contains(QLatin1String("/libzrhost"));
        }
        return false;
    }

    QStringList m_data;
};
