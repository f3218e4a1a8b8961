// The studio's language as main() installs it: the catalogues of the build for English,
// none for Russian, and a missing catalogue that leaves its texts in Russian with a warning
// naming the file and the folder, while the other catalogues still apply.
#include <app/startup/logindialog.h>
#include <app/startup/studiolanguage.h>

#include <host/gui/widgets/searchwidget.h>

#include <QFile>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString BuiltCatalogues = QStringLiteral(ZR_BINARY_DIR "/translations");

// A text of the studio's own library and one of the host libraries, as the operator sees them.
QString studioText()
{
    return LoginDialog().windowTitle();
}
QString hostText()
{
    return SearchWidget().findChild<QLineEdit *>()->placeholderText();
}

} // namespace

class StudioLanguageTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void catalogues_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("present"); // the catalogues copied to the folder
        QTest::addColumn<QStringList>("missing");
        QTest::addColumn<QString>("studio");
        QTest::addColumn<QString>("host");

        const QStringList both{QStringLiteral("zrstudio"), QStringLiteral("zrhost")};
        QTest::newRow("Russian needs none")
            << "ru_RU" << QStringList() << QStringList() << "Вход в студию Zeral"
            << "Поиск";
        QTest::newRow("English, both present")
            << "en_GB" << both << QStringList{QStringLiteral("userctl_en_GB.qm")}
            << "Log in to Zeral Studio"
            << "Search";
        QTest::newRow("English, studio's missing")
            << "en_US" << QStringList{QStringLiteral("zrhost")}
            << QStringList{QStringLiteral("zrstudio_en_US.qm"), QStringLiteral("userctl_en_US.qm")}
            << "Вход в студию Zeral"
            << "Search";
        QTest::newRow("English, host's missing")
            << "en_GB" << QStringList{QStringLiteral("zrstudio")}
            << QStringList{QStringLiteral("zrhost_en_GB.qm"), QStringLiteral("userctl_en_GB.qm")}
            << "Log in to Zeral Studio"
            << "Поиск";
        QTest::newRow("English, none at all")
            << "en_GB" << QStringList()
            << QStringList{QStringLiteral("zrstudio_en_GB.qm"), QStringLiteral("zrhost_en_GB.qm"),
                           QStringLiteral("userctl_en_GB.qm")}
            << "Вход в студию Zeral"
            << "Поиск";
    }

    void catalogues()
    {
        QFETCH(QString, language);
        QFETCH(QStringList, present);
        QFETCH(QStringList, missing);
        QFETCH(QString, studio);
        QFETCH(QString, host);

        QTemporaryDir folder;
        for (const QString &name : present) {
            const QString file = name + QLatin1String("_en.qm");
            QVERIFY2(QFile::copy(BuiltCatalogues + QLatin1Char('/') + file, folder.filePath(file)),
                     qPrintable(file));
        }
        for (const QString &file : missing) {
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QRegularExpression::escape(file) + ".* in "
                                                    + QRegularExpression::escape(folder.path())
                                                    + ".*stay in Russian"));
        }
        {
            StudioLanguage installed;
            QCOMPARE(installed.install(language, folder.path()), missing);
            QCOMPARE(QLocale().name(), language);
            QCOMPARE(studioText(), studio);
            QCOMPARE(hostText(), host);
        }
        // Gone with the object: the next language starts from the sources.
        QCOMPARE(studioText(), QStringLiteral("Вход в студию Zeral"));
        QCOMPARE(hostText(), QStringLiteral("Поиск"));
    }
};

QTEST_MAIN(StudioLanguageTest)
#include "tst_studiolanguage.moc"
