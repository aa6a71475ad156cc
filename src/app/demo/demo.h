#pragma once

#include <string>
#include <vector>

// The program's work, by its arguments; the process's exit status. See DemoUsage in the source.
int DemoMain(const std::vector<std::string>& arguments);
