#pragma once

#include "geometry/dblock.h"
#include "geometry/dbox.h"
#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

class DGeode;
class DMaterial;
class DofReader;
class DofWriter;
class DVrmlReader;
struct DAseFile;

// A run of triangles of one material. start and count are three times the index position and the number of indices:
// count is 9 a triangle.
struct DBurst
{
  int32_t start = 0;
  int32_t count = 0;
  int32_t mtlID = 0;  // of a submaterial; without meaning when the material has none
  int32_t vperP = 3;  // vertices a polygon: 3, or 4 for quads
  uint32_t flags = 0; // at run time alone, not stored

  int FirstIndex() const { return start / 3; }
  int IndexCount() const { return count / 3; }
};

// One piece of indexed triangle geometry. Empty after construction; filled by a reader or by hand, then closed by
// FinalizeGeob. What changes vertices afterwards calls RefreshVBO.
class DGeob
{
public:
  static constexpr int MAX_BURSTS = 100;
  static constexpr int MAX_CHANNELS = 2;
  static constexpr int MAX_VERTICES = 65536; // that an index can name
  enum Flag : uint32_t
  {
    TRANSPARENT_PASS = 0x01,
    IN_VBO = 0x10,
    ADJACENCY = 0x20,
    BOX_VALID = 0x80
  };

  explicit DGeob(DGeode* owner = nullptr);
  ~DGeob();
  DGeob(const DGeob&) = delete;
  DGeob& operator=(const DGeob&) = delete;

  uint32_t flags = 0;
  uint32_t paintFlags = 0; // stored, and carried along
  uint32_t userFlags = 0;
  int32_t materialRef = 0; // into the owner's materials
  DArray<uint16_t> index;  // three a triangle
  DArray<DVector3> vertex;
  DArray<DVector3> normal; // empty, or one a vertex (a file may bring more)
  std::array<DArray<DVector2>, MAX_CHANNELS> texCoord;
  DArray<DVector3> vertexColor; // 0 to 1
  DArray<DVector4> tangent;     // w is the handedness, +1 or -1
  DArray<DVector3> baseVertex;  // the vertices before any deformation
  // Triangles by value, kept in step by ScaleVertices; empty unless someone fills it.
  std::vector<std::array<DVector3, 3>> faceVertex;
  std::vector<DBurst> burst;                                 // at most MAX_BURSTS
  const std::vector<uint16_t>* indexArrayOverride = nullptr; // goes to the index buffer in place of index; not owned
  float radius = 0;                                          // half the diagonal of the box
  DVector3 bboxCenter{0.0f};
  DGeode* geode; // the owner; may be null

  int VertexCount() const { return static_cast<int>(vertex.size()); }
  int IndexCount() const { return static_cast<int>(index.size()); }
  int FaceCount() const { return IndexCount() / 3; }
  int Bursts() const { return static_cast<int>(burst.size()); }
  // False, with a report, at MAX_BURSTS.
  bool AddBurst(const DBurst& b);
  // The part of the index array that a burst names, clipped to what there is.
  std::span<const uint16_t> BurstIndices(int i) const;
  // The part that is painted: quads count their place in fours where triangles count it in threes. Empty for other
  // polygons.
  std::span<const uint16_t> PaintedIndices(int i) const;
  // The first burst with i below start + count, in the units of those; -1 when there is none.
  int GetBurstOfIndex(int i) const;
  int GetTexCoordChannels() const; // leading channels that exist
  // Null without materials; see DGeode for what a number out of range gives.
  DMaterial* GetMaterial(int mtlID) const;

  // Another number after each change that was closed by RefreshVBO, and never one that another geob has or had.
  uint64_t ShapeVersion() const { return shapeVersion; }

  void Destroy(); // empty again, buffer objects gone
  // Bad indices go to 0, box and radius are made, channel 0 is made up when missing. Reports each.
  void FinalizeGeob();
  const DBox& GetBoundingBox();
  DVector3 GetBoundingSphere(); // its centre; radius is beside it
  void RethinkNormals();        // from the triangles of the first burst
  void RotateNormals(const glm::mat3& m);
  void CalculateTangentArray(); // vertices split where mirrored texture coordinates meet
  bool Validate() const;        // reports each bad index; always true
  int CheckDegenerate() const;  // how many triangles have two corners in one place
  void ScaleVertices(float x, float y, float z);
  void Translate(float x, float y, float z);
  void FlipFaces(int burst);
  // The first triangle in index order that the ray from one point through another meets, in world space.
  bool Query(const DVector3& from, const DVector3& to, const DMatrix4& matrix, DVector3* hit) const;
  // N copies of the indices, then for each position its index and the neighbour across the edge to the next corner.
  std::vector<uint16_t> AdjacencyIndices() const;

  // Nothing happens without an OpenGL context.
  void EnableVBO();
  void DisableVBO();
  void RefreshVBO(); // when the arrays are in buffer objects, rebuilds them
  void Paint();
  void PaintOptimized(int burst); // arrays and one draw; no material

  // A GOB1 chunk of a model file. False for the former format, which ends the model's load.
  bool ImportDOF(DofReader& in);
  void ExportDOF(DofWriter& out) const;

  // Behind "*GEOMOBJECT". False (reported, but for a count of faces of 0) when the import is to end.
  bool ImportASE(DAseFile& file);
  // Behind "geometry". False (reported) when the import is to end.
  bool ImportVRML(DVrmlReader& in);
  // The shape, with "\n" at line ends. False (reported) without a material.
  bool ExportVRML(std::string& out, const std::string& modelName, int number, int mode) const;

  // OpenGL names, 0 when absent.
  uint32_t vertexBuffer = 0;
  bool vertexBufferCentered = false; // holds the vertices around the middle of the box
  uint32_t indexBuffer = 0;
  uint32_t normalBuffer = 0;
  uint32_t colorBuffer = 0;
  uint32_t tangentBuffer = 0;
  std::array<uint32_t, MAX_CHANNELS> texCoordBuffer{};

private:
  void ShapeChanged();
  const char* GeodeName() const;
  void SetArrays() const;
  void DrawBurst(int i) const;
  bool UploadArrays();
  void PaintLayer(int i, int layer, DMaterial& m) const;
  void ImportIndices(DofReader& in);
  void ImportVertices(DofReader& in);
  void ImportBaseVertices(DofReader& in);
  void ImportParallel(DofReader& in, DArray<DVector3>& array, const char* what);
  void ImportTexCoords(DofReader& in, int channel);
  void ImportBursts(DofReader& in);

  DBox bbox;
  uint64_t shapeVersion;
};
