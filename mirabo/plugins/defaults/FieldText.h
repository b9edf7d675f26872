#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbString.h>

#include <QString>

#include <string_view>

inline QString toText(const SbName& name)
{
    return QString::fromUtf8(name.getString());
}

inline QString toText(const SbString& text)
{
    return QString::fromUtf8(text.getString(), static_cast<int>(text.getLength()));
}

inline SbString fromText(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return SbString(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}
