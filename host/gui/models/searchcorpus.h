#pragma once

#include <shared/types.h>

#include <QHash>
#include <QString>
#include <QStringView>
#include <QVector>

// The search texts of many objects in one string, so that a word is looked for in a single
// pass over contiguous memory rather than object by object: on 100,000 objects that is the
// difference between a filter the operator waits for and one he doesn't notice.
// A changed text is appended anew and its old place forgotten, so keeping the corpus current
// costs no more than the change itself; the string is compacted when half of it is stale.
class SearchCorpus
{
public:
    // Texts must not contain the separator U+001F; nobody types it into a search. Returns
    // where the uid's text now starts in text().
    int set(zeral::TYPE_ID uid, QStringView text);
    void remove(zeral::TYPE_ID uid);
    void clear();
    // The uids whose text contains `word`, each once.
    QVector<zeral::TYPE_ID> find(const QString &word) const;

    // All texts, one after the other: the holders of the uids read theirs here, from where
    // set() put it, instead of keeping a copy. A compaction or clear() moves the texts and
    // changes layout(); startOf() then tells each uid's new place.
    const QString &text() const { return m_text; }
    int layout() const { return m_layout; }
    int startOf(zeral::TYPE_ID uid) const;

    // The text case-folded as QString::toCaseFolded does it, in its own buffer, and quicker
    // for the Latin and Cyrillic letters that nearly every name is made of.
    static QString fold(QString text);

    // Where `word` first occurs in `text` from `from` on, -1 if nowhere: QStringView::indexOf,
    // sixteen or eight places at a time (AVX2 where the processor has it, else SSE2).
    static int indexOf(QStringView text, QStringView word, int from);

private:
    void append(zeral::TYPE_ID uid, QStringView text);
    void compact();

    QString m_text;
    QVector<int> m_starts; // where each entry's text starts in m_text
    QVector<zeral::TYPE_ID> m_uids;
    QHash<zeral::TYPE_ID, int> m_current; // the live entry of each uid
    int m_stale = 0;
    int m_layout = 0;
};
