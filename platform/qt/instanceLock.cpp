#include "platform/qt/instanceLock.h"

#include "base/version.h"
#include "platform/qt/text.h"

#include <QStandardPaths>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace platform {

bool becomeOnlyInstance() {
    static int file = -1; // stays open until the process ends
    if (file < 0) {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
        const std::string path = toUtf8(folder) + '/' + program::name + ".lock";
        file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    }
    // A user without a folder of that kind is better served by a program that starts.
    return file < 0 || ::flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

} // namespace platform
