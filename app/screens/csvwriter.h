#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QAbstractItemModel;

// Tables as CSV (RFC 4180): comma separated, lines ended by CRLF, a field quoted when it holds
// a comma, a quote, a line break or space at an end, quotes inside doubled. UTF-8 with a byte
// order mark, so that a spreadsheet opened on Windows reads Cyrillic right.
class CsvWriter
{
public:
    static QString field(const QString &text);
    static QString line(const QStringList &fields);
    // The header and every row of a flat model, as the model displays them.
    static QByteArray fromModel(const QAbstractItemModel &model);

    CsvWriter() = delete;
};
