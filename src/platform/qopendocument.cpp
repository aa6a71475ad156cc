#include "platform/qopendocument.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

bool QOpenDocument(const std::string& what, const std::string& args)
{
  std::string program = "xdg-open", document = what, more = args;
  const std::array<char*, 4> argv = {program.data(), document.data(), more.empty() ? nullptr : more.data(), nullptr};
  pid_t child = 0;
  if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
    return false;
  // It may stay as long as the document is open; nobody waits for it, and it leaves no zombie.
  std::thread([child] { waitpid(child, nullptr, 0); }).detach();
  return true;
}
