#pragma once

#include <string>
#include <vector>

class QInfo;

// What an author should know of in a track.
struct RTrackFinding
{
  enum Severity
  {
    NOTE,
    WARNING,
    PROBLEM, // the simulator won't do what the author wants
    FATAL    // the track doesn't load
  };
  Severity severity = NOTE;
  std::string file; // of the track, or "track" where none can be told
  std::string text;

  static const char* Word(Severity severity); // "note", "warning", "error", "fatal"
};

// Loads the track of that directory's name with its shaders and pictures and looks through all that it declares.
// Everything that is reported meanwhile is a finding and goes nowhere else. settings: the application's.
std::vector<RTrackFinding> RCheckTrack(const std::string& name, const QInfo& settings);
