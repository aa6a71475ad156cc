#pragma once

#include <cstdint>

class DGeob;
class DGeode;

// Makes imported models compact. Each step changes indices, vertex arrays, bursts or materials in place, before buffer
// objects are made, and gives the number of things that it removed. When memory runs out, a step leaves its geob as it
// was (reported) and gives 0. An index that names no vertex does no harm.

// Joins the bursts that lead to one material, in order of each material's first burst. A burst whose id is -1 goes,
// with its triangles.
int DGeobOptimizeBursts(DGeob& geob);
// Points indices at the lowest of the vertices that are equal in position, texture coordinates and normal. Equal is
// float equality: -0 equals 0, a NaN equals nothing. Colours don't count. Vertices stay, without use. Gives the number
// of equal pairs: k(k-1)/2 for k equal vertices.
int64_t DGeobMergeVertices(DGeob& geob);
// Removes the vertices that no index names; the holes are filled from the top.
int DGeobPackIndices(DGeob& geob);
// Puts vertices in order of first use. Removes nothing: 0.
int DGeobSortVertices(DGeob& geob);
// Says that there is no such thing yet.
int DGeobTriangulate(DGeob& geob);

// The same over all geobs; counts are added up.
int DGeodeOptimizeBursts(DGeode& geode);
int64_t DGeodeMergeVertices(DGeode& geode);
int DGeodePackIndices(DGeode& geode);
int DGeodeSortVertices(DGeode& geode);
// A material of whose submaterials one alone is used becomes that one. Gives the submaterials destroyed.
int DGeodeFlattenMaterials(DGeode& geode);
// The above, then the materials that no geob names go, and the numbers close up.
int DGeodeRemoveUnusedMaterials(DGeode& geode);
// Bursts, merge, pack, sort and materials, in this order. Gives the sum of their counts.
int64_t DGeodeOptimize(DGeode& geode);

// White diffuse light and a glow of red 0.8 for each material of the table; submaterials stay as they are.
void DGeodeSetLitMaterials(DGeode& geode);
// Normals from the faces, and the materials as above.
void DGeodeAddLighting(DGeode& geode);
