#include "host/FileLock.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace Corvella {

FileLock::FileLock(const std::string& path)
    : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR), path.c_str()) {}

bool FileLock::tryLock() const {
  if (::flock(file_.number(), LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK) return false;
  throw std::system_error(errno, std::generic_category(), "flock");
}

}  // namespace Corvella
