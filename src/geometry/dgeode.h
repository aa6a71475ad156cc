#pragma once

#include "geometry/dbox.h"
#include "geometry/dgeob.h"
#include "geometry/dmaterial.h"
#include "geometry/dobject.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class DPickTree;

enum DVrmlMode
{
  VRML_COMPATIBLE = 1, // CR LF, and nodes around each shape that another converter looks for
  VRML_APPEND = 2      // behind what the file holds, without a header
};

// A model: materials, and pieces of geometry that name them.
class DGeode : public DObject
{
public:
  static constexpr int MAX_MATERIALS = 6000;
  static constexpr int MAX_GEOBS = 200;
  static constexpr int MAX_LODS = 10;
  static constexpr float FAR = 99999.0f;
  enum GeodeFlag : uint32_t
  {
    LODS_NOT_OWNED = 0x04
  };

  explicit DGeode(std::string_view name = {});
  ~DGeode() override;
  DGeode(const DGeode&) = delete;
  DGeode& operator=(const DGeode&) = delete;

  std::string name;    // under which the model was loaded
  std::string mapPath; // searched first for the textures
  std::vector<std::unique_ptr<DMaterial>> material;
  std::vector<std::unique_ptr<DGeob>> geob;
  uint32_t geodeFlags = 0;
  DVector3 center{0.0f}; // of the box; written by GetBoundingBox
  // Slot 0 is the model itself, 1 to 9 are coarser ones; the first empty slot ends the chain. Destroyed with this
  // model unless LODS_NOT_OWNED is set.
  std::array<DGeode*, MAX_LODS> lod{};
  int lodIndex = 0;
  mutable std::unique_ptr<DPickTree> pickTree; // made by PickGeode at the first pick
  float lodNear = 0;                           // the camera distances between which this model is shown
  float lodFar = FAR;

  int GetNoofGeobs() const { return static_cast<int>(geob.size()); }
  int GetNoofMaterials() const { return static_cast<int>(material.size()); }
  DGeob* GetGeob(int i) const;                                  // null out of range
  DMaterial* GetMaterial(int i) const;                          // null out of range
  DGeob* AddGeob();                                             // null, with a report, at MAX_GEOBS
  DMaterial* AddMaterial();                                     // null, with a report, at MAX_MATERIALS
  DMaterial* FindMaterial(std::string_view materialName) const; // exact; the first of that name or null
  int FindMaterialIndex(std::string_view materialName) const;   // 0 when absent
  void SetMapPath(const char* path);                            // null: empty
  // mapPath/file, images/file, or the name as it stands.
  std::string FindMapFile(std::string_view fileName) const;

  // Of all geobs, and the centre set. Without geobs min is 99999 and max -99999.
  DBox GetBoundingBox();
  void ScaleVertices(float x, float y, float z); // and the coarser models
  void Translate(float x, float y, float z);     // and the coarser models
  void RethinkNormals();
  void RotateNormals(const glm::mat3& m);
  bool Validate() const;
  void EnableVBO(); // over the whole chain
  void DisableVBO();
  void Paint() override;
  void Clear(); // no materials, no geobs

  // Reads a model file. False when it can't be opened or isn't one; what was read until then stays.
  bool ImportDOF(const std::string& path);
  // The same from bytes; name and messages stay with this model's name.
  bool ImportDOF(std::span<const std::byte> bytes);
  DArray<std::byte> ExportDOFBytes() const;
  bool NeedsTangents() const; // a material's shader asks for them
  // Replaces the file. False when it couldn't be written (reported).
  [[nodiscard]] bool ExportDOF(const std::string& path) const;

  // Reads an exported scene: materials without their submaterials, an object for each geometry object; each face has
  // three vertices of its own. False (reported) when it can't be opened, or an object has no faces or no end; what was
  // read until then stays. faceIndexOut: the source vertices of the last object, three a face.
  bool ImportASE(DArray<int32_t>& faceIndexOut, const std::string& fileName);
  // The same from its text; pictures are looked for beside fileName.
  bool ImportASE(DArray<int32_t>& faceIndexOut, std::string_view text, const std::string& fileName);
  // Reads a VRML 2.0 file: an object for each indexed face set. False when it can't be opened or an object is broken
  // (reported); what was read until then stays.
  bool ImportVRML(const std::string& fileName);
  bool ImportVRMLText(std::string_view text); // from the text itself
  // Writes VRML 2.0; mode is of DVrmlMode. The shapes are named after modelName, without its directory and extension.
  // False (reported) when the file can't be written, or an object has no material: then nothing is written.
  [[nodiscard]] bool ExportVRML(const std::string& modelName, const std::string& fileName, int mode) const;

private:
  bool ImportChunks(DofReader& in);
  void ImportMaterials(DofReader& in);
  bool ImportGeobs(DofReader& in);
};

// Loads a model and, when wanted, its coarser levels "NAME_lod1.dof" to "_lod9.dof" as far as they exist. distances
// has a number for each level; missing ones are 0. The models are linked by their lod tables and owned by the caller.
// False, with models empty, when the first can't be loaded.
bool d3GeodeLoadLOD(const std::string& fileName, std::span<const float> distances, float farDistance,
                    std::vector<std::unique_ptr<DGeode>>& models, bool wantLods, const char* mapPath = nullptr);
