// Converts the program's texts, in UTF-8, to the toolkit's strings and back.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace platform {

inline QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string toUtf8(const QString& text) {
    return text.toStdString();
}

} // namespace platform
