#pragma once

#include "support/tempdir.h"
#include "track/rtrackvrml.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

// A data root of a test's own with the track "small", in which the test works.
class SmallTrack
{
public:
  SmallTrack(); // with a track.ini that names it, and nothing else
  // A file of the track.
  void Write(std::string_view leaf, std::string_view content) const;
  std::string Text(std::string_view leaf) const;
  std::string Path(std::string_view leaf = {}) const; // full
  std::unique_ptr<RTrackVRML> New() const;
  std::unique_ptr<RTrackVRML> Load() const; // null when it failed
  // The road: cross-sections from z = 0 on, one every 10 m, 8 m wide around x = 0.
  void WriteRoad(int lines) const;
  // A box of 2 m side with its base's middle at the origin.
  void WriteModel(std::string_view leaf) const;
  // Records, comments and foreign keys of each kind, and two models.
  void WriteAll() const;

  // The four files that a save writes, by name.
  std::map<std::string, std::string> SavedFiles() const;
  // Names in the directory that are none of the track's own files and not its cache: what a save left behind.
  int StrayFiles() const;

  TempDir root;

private:
  InDirectory inRoot;
};
