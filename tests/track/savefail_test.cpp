#include "track/smalltrack.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Saves that can't succeed: no room, no permission. Each runs in a process of its own, which changes its own world.

namespace fs = std::filesystem;

namespace {

enum Outcome
{
  GOOD = 0,
  BAD = 1,
  IMPOSSIBLE = 77 // this machine doesn't let a process do what the case needs
};

int RunApart(const std::function<int()>& work)
{
  const pid_t pid = fork();
  if (pid == 0) {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    _exit(work());
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : BAD;
}

// A file system of its own, as root or as one who may become root in a namespace.
bool OwnMounts()
{
  if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
    return false;
  return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

void Enlarge(RTrackVRML& track)
{
  track.gridCount = RTrack::MAX_POSITIONS;
  track.pitCount = RTrack::MAX_POSITIONS;
  track.splines.lines[0].flags = 1;
  track.trafficGrid.wayPoints.At(0)->flags = 1;
  (*track.nodes.At(0))->flags = 0;
}

// False when the save isn't all or nothing, or says one thing and does another.
bool SavesAllOrNothing(const SmallTrack& small, RTrackVRML& track, bool& saved)
{
  const auto before = small.SavedFiles();
  saved = track.Save();
  const auto after = small.SavedFiles();
  if (small.StrayFiles() != 0)
    return false;
  for (const auto& [leaf, text] : before)
    if ((text == after.at(leaf)) == saved)
      return false;
  return true;
}

// Fills the directory's file system but for this many bytes.
void LeaveRoom(const std::string& path, size_t room)
{
  {
    std::ofstream filler(path, std::ios::binary);
    const std::string block(4096, 'x');
    while (filler.write(block.data(), 4096).flush())
      continue;
  }
  fs::resize_file(path, fs::file_size(path) - std::min(room, static_cast<size_t>(fs::file_size(path))));
}

} // namespace

TEST(SaveFails, WithAllFilesAsTheyWereWhenTheDiskIsFull)
{
  SmallTrack small;
  const int outcome = RunApart([&] {
    fs::create_directories(small.Path());
    if (!OwnMounts() || mount("none", small.Path().c_str(), "tmpfs", 0, "size=256k") != 0)
      return IMPOSSIBLE;
    // The working directory still leads to the directories below which the new file system lies.
    small.Write("track.ini", "track\n{\n  name=Small\n}\n");
    small.WriteAll();
    const std::string filler = small.Path("filler.ini");
    int failed = 0;
    int succeeded = 0;
    for (size_t room = 0; room <= 80 * 1024; room += 4096) {
      fs::remove(filler);
      small.WriteAll();
      const auto track = small.Load();
      if (!track)
        return BAD;
      Enlarge(*track);
      LeaveRoom(filler, room);
      bool saved = false;
      if (!SavesAllOrNothing(small, *track, saved))
        return BAD;
      ++(saved ? succeeded : failed);
    }
    // Room for none, for some and for all of the files.
    return failed > 3 && succeeded > 3 ? GOOD : BAD;
  });
  if (outcome == IMPOSSIBLE)
    GTEST_SKIP() << "skipped: no file system of its own to fill";
  EXPECT_EQ(GOOD, outcome);
}

TEST(SaveFails, WithAllFilesAsTheyWereWhenAFileMayNotGrow)
{
  SmallTrack small;
  small.WriteAll();
  EXPECT_EQ(GOOD, RunApart([&] {
              const auto track = small.Load();
              Enlarge(*track);
              signal(SIGXFSZ, SIG_IGN); // writing fails instead
              // Enough for three of the files; special.ini is larger.
              const rlimit limit{4000, 4000};
              setrlimit(RLIMIT_FSIZE, &limit);
              bool saved = true;
              return SavesAllOrNothing(small, *track, saved) && !saved ? GOOD : BAD;
            }));
}

TEST(SaveFails, WithAllFilesAsTheyWereInAReadOnlyPlace)
{
  for (const bool byMount : {true, false}) {
    SCOPED_TRACE(byMount ? "read-only file system" : "read-only directory");
    SmallTrack small;
    small.WriteAll();
    const int outcome = RunApart([&] {
      const auto track = small.Load();
      Enlarge(*track);
      const std::string path = small.Path();
      if (byMount) {
        if (!OwnMounts() || mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) != 0 ||
            mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
          return int(IMPOSSIBLE);
      } else {
        fs::permissions(path, fs::perms(0555));
        fs::permissions(small.root.Path(), fs::perms(0755));
        constexpr uid_t NOBODY = 65534;
        if (geteuid() == 0 && setresuid(NOBODY, NOBODY, NOBODY) != 0)
          return int(IMPOSSIBLE);
      }
      bool saved = true;
      return int(SavesAllOrNothing(small, *track, saved) && !saved ? GOOD : BAD);
    });
    fs::permissions(small.Path(), fs::perms(0755));
    if (outcome == IMPOSSIBLE)
      std::printf("skipped: %s\n", byMount ? "no mounts here" : "can't become another user");
    else
      EXPECT_EQ(GOOD, outcome);
  }
}
