#include <host/gui/models/searchcorpus.h>

#include <QRandomGenerator>
#include <QtTest>

using zeral::TYPE_ID;
using Uids = QVector<TYPE_ID>;

class TestSearchCorpus : public QObject
{
    Q_OBJECT
private slots:
    void find_data();
    void find();
    void changesAndRemovals();
    void indexOfAgreesWithQt();
    void foldAgreesWithQt();
};

void TestSearchCorpus::find_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<Uids>("expected");

    QTest::addRow("each uid once, however often it matches") << "ов" << Uids{10, 30};
    QTest::addRow("the first and the last entry") << "a" << Uids{10, 40};
    QTest::addRow("no match across two entries") << "ова" << Uids{};
    QTest::addRow("empty word gives everyone") << "" << Uids{10, 20, 30, 40};
    QTest::addRow("whole text of an entry") << "петр" << Uids{20};
    QTest::addRow("absent") << "zz" << Uids{};
}

void TestSearchCorpus::find()
{
    QFETCH(QString, word);
    QFETCH(Uids, expected);
    SearchCorpus corpus;
    corpus.set(10, QStringLiteral("a иванов\nivanov@ex.org ов"));
    corpus.set(20, QStringLiteral("петр"));
    corpus.set(30, QStringLiteral("сидоров"));
    corpus.set(40, QStringLiteral("a"));
    QCOMPARE(corpus.find(word), expected);

    corpus.clear();
    QCOMPARE(corpus.find(word), Uids{});
}

void TestSearchCorpus::changesAndRemovals()
{
    SearchCorpus corpus;
    // Enough changes to have the corpus compacted several times on the way; each text stands
    // where set() says, and after a compaction where startOf() says.
    const int firstLayout = corpus.layout();
    const auto textOf = [&corpus](TYPE_ID uid) { return corpus.text().mid(corpus.startOf(uid), 10); };
    for (int round = 0; round < 5; ++round) {
        for (TYPE_ID uid = 1; uid <= 1000; ++uid) {
            const QString text = QStringLiteral("round%1 user%2").arg(round).arg(uid);
            const int layout = corpus.layout();
            const int start = corpus.set(uid, text);
            QCOMPARE(corpus.text().mid(start, text.size()), text);
            if (corpus.layout() != layout)
                QCOMPARE(textOf(1), QStringLiteral("round%1 user1").arg(round).left(10));
        }
    }
    QVERIFY(corpus.layout() != firstLayout);
    QCOMPARE(corpus.find(QStringLiteral("round0")), Uids{});
    QCOMPARE(corpus.find(QStringLiteral("round4")).size(), 1000);
    QCOMPARE(corpus.find(QStringLiteral("user999")), Uids{999});

    corpus.remove(999);
    corpus.remove(999);
    QCOMPARE(corpus.find(QStringLiteral("user999")), Uids{});
    QCOMPARE(corpus.find(QString()).size(), 999);
    corpus.set(999, QStringLiteral("back"));
    QCOMPARE(corpus.find(QStringLiteral("back")), Uids{999});
}


void TestSearchCorpus::indexOfAgreesWithQt()
{
    // Texts over three letters, so that words recur, of every length around the sixteen and
    // eight places compared at a time, and every place to search from.
    QRandomGenerator random(5);
    const QString letters = QStringLiteral("аоb");
    const auto randomText = [&](int length) {
        QString text;
        for (int i = 0; i < length; ++i)
            text += letters.at(random.bounded(letters.size()));
        return text;
    };
    for (int round = 0; round < 400; ++round) {
        const QString text = randomText(random.bounded(81));
        const QString word = randomText(random.bounded(9));
        for (int from = 0; from <= text.size(); ++from) {
            const int expected = int(QStringView(text).indexOf(word, from));
            const int found = SearchCorpus::indexOf(text, word, from);
            if (found != expected)
                QFAIL(qPrintable(QStringLiteral("\"%1\" in \"%2\" from %3: %4 instead of %5")
                                     .arg(word, text)
                                     .arg(from)
                                     .arg(found)
                                     .arg(expected)));
        }
    }
}

void TestSearchCorpus::foldAgreesWithQt()
{
    // Every character of the first plane, then letters beyond it, which fold by their pair.
    QString everyCharacter;
    for (uint c = 1; c < 0x10000; ++c) {
        if (!QChar::isSurrogate(c))
            everyCharacter += QChar(c);
    }
    QCOMPARE(SearchCorpus::fold(everyCharacter), everyCharacter.toCaseFolded());
    const QString beyond = QStringLiteral("Ёлка ПЁТР ") + QString::fromUcs4(U"\U00010400\U00010428 Z");
    QCOMPARE(SearchCorpus::fold(beyond), beyond.toCaseFolded());
}

QTEST_APPLESS_MAIN(TestSearchCorpus)
#include "tst_searchcorpus.moc"
