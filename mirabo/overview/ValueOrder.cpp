#include "mirabo/overview/ValueOrder.h"

#include <QByteArray>

#include <charconv>
#include <optional>

namespace mirabo {

namespace {

/// Reads the numbers of a text one by one.
class Numbers {
public:
    explicit Numbers(const QString& text) : m_text(text.toLatin1()), m_at(m_text.constData()) {}

    std::optional<double> next()
    {
        const char* end = m_text.constData() + m_text.size();
        while (m_at < end && (*m_at == ' ' || *m_at == ',' || *m_at == '['))
            ++m_at;
        double number = 0;
        const auto result = std::from_chars(m_at, end, number);
        if (result.ec != std::errc())
            return std::nullopt;
        m_at = result.ptr;
        return number;
    }

private:
    QByteArray m_text;
    const char* m_at;
};

} // namespace

bool valueLess(const QString& a, const QString& b)
{
    Numbers left(a);
    Numbers right(b);
    for (bool first = true;; first = false) {
        const auto l = left.next();
        const auto r = right.next();
        if (!l && !r) {
            if (first)
                break;
            return false;
        }
        if (!l || !r)
            return first ? l.has_value() : r.has_value(); // numbers first; the shorter list first
        if (*l != *r)
            return *l < *r;
    }
    const int order = a.compare(b, Qt::CaseInsensitive);
    return order != 0 ? order < 0 : a < b;
}

} // namespace mirabo
