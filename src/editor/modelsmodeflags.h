#pragma once

#include <cstdint>
#include <span>
#include <string>

struct SelectedNode;

// The flags of several nodes beside each other.
struct SharedFlags
{
  uint32_t shared = 0;   // set in all
  uint32_t unshared = 0; // set in some
};
SharedFlags CompareFlags(std::span<const SelectedNode> nodes); // none of no nodes

// The words of the bits from bit 0 on, each with a blank behind it.
std::string FlagNames(uint32_t flags);
