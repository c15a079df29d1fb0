#include "story/record/knownFiles.h"

#include <algorithm>

namespace story {

const KnownFile* KnownFiles::find(const std::string& path) const {
    const auto at = files_.find(path);
    return at == files_.end() ? nullptr : &at->second;
}

bool KnownFiles::exists(const std::string& path, bool exists) {
    const KnownFile* file = find(path);
    if (file != nullptr && file->exists == exists) {
        return true;
    }
    files_[path] = {.exists = exists};
    return false;
}

bool KnownFiles::length(const std::string& path, std::int64_t length) {
    const KnownFile* file = find(path);
    if (file != nullptr && file->exists && file->length == length) {
        return true;
    }
    KnownFile& noted = files_[path];
    noted.exists = true;
    noted.length = length;
    return false;
}

bool KnownFiles::content(const std::string& path, std::int64_t offset, std::string_view bytes) {
    KnownFile& file = files_[path];
    const auto start = static_cast<std::size_t>(offset);
    if (file.exists && start <= file.content.size() && file.content.compare(start, bytes.size(), bytes) == 0) {
        return true;
    }
    file.exists = true;
    file.content.resize(std::max(file.content.size(), start + bytes.size()));
    std::ranges::copy(bytes, file.content.begin() + offset);
    return false;
}

void KnownFiles::write(const std::string& path, std::int64_t offset, std::span<const std::uint8_t> bytes) {
    content(path, offset, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    KnownFile& file = files_[path];
    file.length = std::max<std::int64_t>(file.length.value_or(0), offset + std::ssize(bytes));
}

} // namespace story
