#pragma once

#include <string>

class RTrackVRML;

// The work on one file of a batch. Files are read from directory; textures are looked for in mapDirectory, where models
// are written too, under the name of the source in lower case. A model is replaced as a whole or not at all; one whose
// name differs in case alone goes. False when the file couldn't be read or written (reported with its name).

enum QModelType
{
  MODEL_WRL = 0,
  MODEL_ASE = 1
};

bool ConvertModel(const std::string& fileName, const std::string& directory, const std::string& mapDirectory,
                  QModelType type, bool optimize);
// Normals from the faces, and materials that show a baked light.
bool ModelAddLighting(const std::string& fileName, const std::string& directory, const std::string& mapDirectory);
// Smallest and fastest form of the geometry. Materials show a baked light, too.
bool ModelOptimize(const std::string& fileName, const std::string& directory, const std::string& mapDirectory);
// Makes the model a new node of the track.
bool AddModel(RTrackVRML& track, const std::string& fileName, const std::string& directory,
              const std::string& mapDirectory);
