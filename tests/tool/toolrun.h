#pragma once

#include <string>
#include <vector>

// What a run of the program left.
struct ToolRun
{
  int status = -1; // 128 + the signal, when one ended it
  std::string out;
  std::string err;
  int ErrLines() const;
};

struct ToolConditions
{
  std::string out = {}; // where its standard output goes; empty: into ToolRun
  long maxFileSize = 0; // writing beyond that fails; 0: no limit
};

// Runs the program in a directory, with nothing on its standard input.
ToolRun RunTool(const std::string& directory, const std::vector<std::string>& args,
                const ToolConditions& conditions = {});
