#include "TabText.h"

namespace {

constexpr QChar kQuote = u'"';

bool isLineEnd(QChar c)
{
    return c == u'\n' || c == u'\r';
}

/// Reads a cell in quotes that begins at `at`, and moves behind it. What follows the closing quote
/// up to the end of the cell belongs to it.
QString readQuoted(const QString& text, int& at)
{
    QString cell;
    for (++at; at < text.size(); ++at) {
        if (text[at] != kQuote) {
            cell += text[at];
        } else if (at + 1 < text.size() && text[at + 1] == kQuote) {
            cell += kQuote;
            ++at;
        } else {
            ++at;
            break;
        }
    }
    return cell;
}

QString readPlain(const QString& text, int& at)
{
    const int start = at;
    while (at < text.size() && text[at] != u'\t' && !isLineEnd(text[at]))
        ++at;
    return text.mid(start, at - start);
}

} // namespace

std::vector<QStringList> readTabText(const QString& text)
{
    std::vector<QStringList> rows;
    int at = 0;
    while (at < text.size()) {
        QStringList& row = rows.emplace_back();
        for (;;) {
            QString cell;
            if (at < text.size() && text[at] == kQuote)
                cell = readQuoted(text, at);
            row << cell + readPlain(text, at);
            if (at == text.size() || text[at] != u'\t')
                break;
            ++at;
        }
        if (at < text.size())
            at += text.midRef(at).startsWith(QLatin1String("\r\n")) ? 2 : 1;
    }
    return rows;
}

void writeTabCell(QString& text, const QString& cell, bool isFirstInRow)
{
    if (!isFirstInRow)
        text += u'\t';
    const bool needsQuotes = cell.contains(u'\t') || cell.contains(u'\n') || cell.contains(u'\r')
                             || cell.contains(kQuote);
    if (!needsQuotes) {
        text += cell;
        return;
    }
    QString doubled = cell;
    text += kQuote + doubled.replace(kQuote, QString(2, kQuote)) + kQuote;
}
