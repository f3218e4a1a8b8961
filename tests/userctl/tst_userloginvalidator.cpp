// The login validator of the user editors: which logins it takes, and that it leaves the
// text being typed alone.
#include <src/userloginvalidator.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

class TestUserLoginValidator : public QObject
{
    Q_OBJECT
private slots:
    void validate_data()
    {
        QTest::addColumn<QStringList>("taken");
        QTest::addColumn<QString>("input");
        QTest::addColumn<int>("state");

        const QStringList taken{"admin", "Иванов", " guard"};
        const int acceptable = QValidator::Acceptable;
        const int intermediate = QValidator::Intermediate;
        QTest::addRow("free login") << taken << "clerk" << acceptable;
        QTest::addRow("taken login") << taken << "admin" << intermediate;
        QTest::addRow("taken cyrillic login") << taken << "Иванов" << intermediate;
        QTest::addRow("empty") << taken << "" << intermediate;
        QTest::addRow("blanks only") << taken << "   " << intermediate;
        QTest::addRow("tab and blank only") << taken << "\t " << intermediate;
        QTest::addRow("blanks only, nothing taken") << QStringList() << "  " << intermediate;
        QTest::addRow("empty, nothing taken") << QStringList() << "" << intermediate;
        QTest::addRow("anything, nothing taken") << QStringList() << "admin" << acceptable;
        QTest::addRow("leading blank differs") << taken << " admin" << acceptable;
        QTest::addRow("trailing blank differs") << taken << "admin " << acceptable;
        QTest::addRow("taken with its blank") << taken << " guard" << intermediate;
        QTest::addRow("taken without its blank is free") << taken << "guard" << acceptable;
        QTest::addRow("case differs") << taken << "Admin" << acceptable;
        QTest::addRow("cyrillic case differs") << taken << "иванов" << acceptable;
        QTest::addRow("part of a taken login") << taken << "adm" << acceptable;
    }
    void validate()
    {
        QFETCH(QStringList, taken);
        QFETCH(QString, input);
        QFETCH(int, state);
        const UserLoginValidator validator(taken);
        QString text = input;
        int pos = 2;
        QCOMPARE(int(validator.validate(text, pos)), state);
        // Never fixed up and never blocked: what the operator typed stays as it is.
        QCOMPARE(text, input);
        QCOMPARE(pos, 2);
    }

    void emptyByDefault()
    {
        const UserLoginValidator validator;
        QVERIFY(validator.denyLogins().isEmpty());
        QString text = QStringLiteral("root");
        int pos = 0;
        QCOMPARE(validator.validate(text, pos), QValidator::Acceptable);
    }

    void setDenyLoginsReplacesAndTells()
    {
        QObject owner;
        UserLoginValidator validator({"admin", "admin", "clerk"}, &owner);
        QCOMPARE(validator.parent(), &owner);
        QStringList logins = validator.denyLogins();
        logins.sort();
        QCOMPARE(logins, (QStringList{"admin", "clerk"}));

        QSignalSpy changed(&validator, &QValidator::changed);
        validator.setDenyLogins({"guard"});
        QCOMPARE(changed.count(), 1);
        QCOMPARE(validator.denyLogins(), QStringList{"guard"});
        QString text = QStringLiteral("admin");
        int pos = 0;
        QCOMPARE(validator.validate(text, pos), QValidator::Acceptable);
        text = QStringLiteral("guard");
        QCOMPARE(validator.validate(text, pos), QValidator::Intermediate);

        validator.setDenyLogins({});
        QCOMPARE(changed.count(), 2);
        QVERIFY(validator.denyLogins().isEmpty());
    }

    // In a line edit: a taken login can be typed through, and is merely not acceptable.
    void inALineEdit()
    {
        QLineEdit edit;
        edit.setValidator(new UserLoginValidator({"admin"}, &edit));
        QTest::keyClicks(&edit, QStringLiteral("admin"));
        QCOMPARE(edit.text(), QStringLiteral("admin"));
        QVERIFY(!edit.hasAcceptableInput());
        QTest::keyClicks(&edit, QStringLiteral("2"));
        QCOMPARE(edit.text(), QStringLiteral("admin2"));
        QVERIFY(edit.hasAcceptableInput());
    }
};

QTEST_MAIN(TestUserLoginValidator)
#include "tst_userloginvalidator.moc"
