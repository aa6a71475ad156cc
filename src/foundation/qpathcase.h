#pragma once

#include <string>

// The name under which a file is opened. Tracks come from systems where "Textures\Grass.TGA" and
// "textures/grass.tga" are one file: the exact name wins; only if it doesn't exist is "\" taken as "/" and each
// component looked for without regard to case. Gives path itself when nothing is found.
std::string QFindPath(const std::string& path);
