#pragma once

#include "geometry/dvector.h"
#include "scene/worldgeodenode.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>

class QInfo;
class WorldScene;
class WorldTransformationNode;

// One visual model that a track's or a car's settings name, with its place in the scene.
class RModel
{
public:
  // Where its file is looked for.
  struct Places
  {
    std::string carDirectory;   // when it belongs to a car
    std::string trackDirectory; // of the current track
  };
  RModel(WorldScene& scene, std::string_view modelName, Places places);
  ~RModel();
  RModel(const RModel&) = delete;
  RModel& operator=(const RModel&) = delete;

  // Reads the keys below "base.name" and the file that they name. False without a message when they name none, and with
  // one when it can't be read.
  [[nodiscard]] bool Load(const QInfo& info, std::string_view base, std::string_view name);
  // Writes the same keys. Reported, and nothing is written, before a load.
  void Save(QInfo& info, std::string_view base, std::string_view name) const;
  WorldGeodeNode* GetNode() const { return node.get(); }
  WorldTransformationNode* GetTransform() const { return tform.get(); } // null for a model that isn't moved
  const std::string& GetFile() const { return file; }

  DVector3 scale{1.0f};
  float uniformScale = 1.0f;
  DVector3 offset{0.0f};
  bool fit = false; // stretched to reach from one point to another
  int alignAxis = 0;

private:
  bool ReadKeys(const QInfo& info, const std::string& key);
  bool LoadFile();

  WorldScene& scene;
  std::string objectName;
  Places places;
  std::string file;                               // as the settings name it
  std::array<float, 10> lod{};                    // metres up to which each level is shown
  std::unique_ptr<WorldTransformationNode> tform; // goes after what hangs below it
  std::unique_ptr<WorldGeodeNode> node;
};
