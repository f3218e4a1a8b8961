#include "csvwriter.h"

#include <QAbstractItemModel>

QString CsvWriter::field(const QString &text)
{
    const bool needsQuotes
        = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"'))
          || text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'))
          || (!text.isEmpty() && (text.front().isSpace() || text.back().isSpace()));
    if (!needsQuotes)
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString CsvWriter::line(const QStringList &fields)
{
    QStringList quoted;
    quoted.reserve(fields.size());
    for (const QString &text : fields)
        quoted.append(field(text));
    return quoted.join(QLatin1Char(',')) + QLatin1String("\r\n");
}

QByteArray CsvWriter::fromModel(const QAbstractItemModel &model)
{
    QString text;
    QStringList fields;
    for (int column = 0; column < model.columnCount(); ++column)
        fields.append(model.headerData(column, Qt::Horizontal).toString());
    text += line(fields);
    for (int row = 0; row < model.rowCount(); ++row) {
        fields.clear();
        for (int column = 0; column < model.columnCount(); ++column)
            fields.append(model.index(row, column).data().toString());
        text += line(fields);
    }
    return QByteArray("\xEF\xBB\xBF") + text.toUtf8();
}
