#include "platform/qsingleinstance.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

QSingleInstance::QSingleInstance(std::string_view program)
{
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  // A zero byte in front: the abstract name space.
  const std::string name = '\0' + std::string(program) + '-' + std::to_string(getuid());
  const size_t length = std::min(name.size(), sizeof address.sun_path);
  std::copy_n(name.data(), length, address.sun_path);
  handle = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (handle < 0)
    return;
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
  if (bind(handle, reinterpret_cast<const sockaddr*>(&address), size) != 0)
    first = errno != EADDRINUSE;
}

QSingleInstance::~QSingleInstance()
{
  if (handle >= 0)
    close(handle);
}
