#include "tool/toolrun.h"

#include "support/tempdir.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void Redirect(const std::string& path, int flags, int fd)
{
  const int opened = open(path.c_str(), flags, 0600);
  if (opened < 0 || dup2(opened, fd) < 0)
    _exit(127);
}

void LimitFileSize(long size)
{
  const rlimit limit{static_cast<rlim_t>(size), static_cast<rlim_t>(size)};
  if (size <= 0)
    return;
  std::signal(SIGXFSZ, SIG_IGN); // a write fails then, and the program goes on
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
    _exit(127);
}

[[noreturn]] void Child(const std::string& directory, std::vector<std::string> args, const std::string& out,
                        const std::string& err)
{
  Redirect("/dev/null", O_RDONLY, STDIN_FILENO);
  Redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
  Redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
  std::vector<char*> argv;
  args.insert(args.begin(), PAVEX_TOOL);
  for (std::string& arg : args)
    argv.push_back(arg.data());
  argv.push_back(nullptr);
  if (chdir(directory.c_str()) == 0)
    execv(PAVEX_TOOL, argv.data());
  _exit(127);
}

} // namespace

int ToolRun::ErrLines() const
{
  return static_cast<int>(std::count(err.begin(), err.end(), '\n'));
}

ToolRun RunTool(const std::string& directory, const std::vector<std::string>& args, const ToolConditions& conditions)
{
  const TempDir dir;
  const std::string out = conditions.out.empty() ? dir.Path("out") : conditions.out;
  const pid_t pid = fork();
  if (pid == 0) {
    LimitFileSize(conditions.maxFileSize);
    Child(directory, args, out, dir.Path("err"));
  }
  int wait = 0;
  ToolRun run;
  if (pid > 0 && waitpid(pid, &wait, 0) == pid)
    run.status = WIFSIGNALED(wait) ? 128 + WTERMSIG(wait) : WEXITSTATUS(wait);
  run.out = conditions.out.empty() ? FileText(out) : "";
  run.err = FileText(dir.Path("err"));
  return run;
}
