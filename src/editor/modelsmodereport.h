#pragma once

#include <string>

class RTrackNode;

// What a node's model is made of, level by level, for a person to read. With texCoords the texture coordinates too.
std::string NodeReport(const RTrackNode& node, bool texCoords);
