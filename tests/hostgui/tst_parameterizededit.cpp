#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/parameterizededit.h>

#include <QDialogButtonBox>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>
#include <QtTest>

class TestParameterizedEdit : public QObject
{
    Q_OBJECT
private slots:
    void states_data();
    void states();
    void callerSetsTheColour();
    void dialogRefusesInvalidInput();
};

void TestParameterizedEdit::states_data()
{
    QTest::addColumn<bool>("highlight");
    QTest::addColumn<bool>("emptyAllowed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("color");

    QTest::addRow("empty, allowed") << true << true << "" << int(ParameterizedEdit::Normal);
    QTest::addRow("empty, not allowed") << true << false << "" << int(ParameterizedEdit::Error);
    QTest::addRow("blanks, not allowed") << true << false << "   " << int(ParameterizedEdit::Error);
    QTest::addRow("valid") << true << false << "ivanov" << int(ParameterizedEdit::Normal);
    QTest::addRow("intermediate") << true << false << "iv" << int(ParameterizedEdit::Error);
    QTest::addRow("no highlighting") << false << false << "" << int(ParameterizedEdit::Normal);
}

void TestParameterizedEdit::states()
{
    QFETCH(bool, highlight);
    QFETCH(bool, emptyAllowed);
    QFETCH(QString, text);
    QFETCH(int, color);

    ParameterizedEdit edit;
    // At least three letters: shorter is Intermediate, as a login validator says of a
    // login that is being typed.
    edit.setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[a-z ]{3,}")), &edit));
    edit.setText(QStringLiteral("start"));
    edit.highlightValidation(highlight);
    edit.setEmptyTextAllowed(emptyAllowed);
    edit.setText(text);
    QCOMPARE(int(edit.borderColor()), color);
}

void TestParameterizedEdit::callerSetsTheColour()
{
    ParameterizedEdit edit;
    const QColor normalBase = edit.palette().color(QPalette::Base);
    edit.setBorderColor(ParameterizedEdit::Error);
    QCOMPARE(edit.borderColor(), ParameterizedEdit::Error);
    QVERIFY(edit.palette().color(QPalette::Base) != normalBase);
    edit.setBorderColor(ParameterizedEdit::Normal);
    QCOMPARE(edit.palette().color(QPalette::Base), normalBase);
}

void TestParameterizedEdit::dialogRefusesInvalidInput()
{
    ValidatingDialog dialog;
    auto *central = new QWidget;
    auto *edit = new ParameterizedEdit(central);
    (new QVBoxLayout(central))->addWidget(edit);
    edit->highlightValidation(true);
    edit->setEmptyTextAllowed(false);
    dialog.setCentralWidget(central);
    dialog.buttonBox()->addButton(QDialogButtonBox::Ok);
    dialog.show();

    dialog.accept();
    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    edit->setText(QStringLiteral("ivanov"));
    dialog.accept();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

QTEST_MAIN(TestParameterizedEdit)
#include "tst_parameterizededit.moc"
