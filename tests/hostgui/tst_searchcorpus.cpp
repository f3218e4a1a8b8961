#include <host/gui/models/searchcorpus.h>

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
    // Enough changes to have the corpus compacted several times on the way.
    for (int round = 0; round < 5; ++round) {
        for (TYPE_ID uid = 1; uid <= 1000; ++uid)
            corpus.set(uid, QStringLiteral("round%1 user%2").arg(round).arg(uid));
    }
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

QTEST_APPLESS_MAIN(TestSearchCorpus)
#include "tst_searchcorpus.moc"
