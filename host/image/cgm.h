// Computer Graphics Metafiles (CGM, ISO 8632-3 binary encoding): our own
// writer for row images, and a reader for the same kind of file.
//
// Some core-description packages take row images only as metafiles, so a row
// can be written as a CGM holding one picture whose only graphic element is a
// CELL ARRAY of the row's pixels in direct colour (8 bits a component). The
// metafile carries the descriptor a viewer expects (BEGIN METAFILE, METAFILE
// VERSION 1, METAFILE DESCRIPTION, METAFILE ELEMENT LIST, colour precision and
// colour value extent), then BEGIN PICTURE, COLOUR SELECTION MODE direct,
// VDC EXTENT, BEGIN PICTURE BODY, the CELL ARRAY, END PICTURE, END METAFILE.
//
// Binary encoding in brief: every element starts with a 16-bit big-endian
// command word: class (4 bits), element id (7 bits) and parameter length in
// octets (5 bits; 31 means "long form": the next 16-bit word holds the length
// in its low 15 bits and, in its top bit, a flag saying that another partition
// of the parameter list follows). Elements start on 16-bit boundaries, so an
// odd-length parameter list is followed by one pad octet. A cell array of a
// row image runs to megabytes, far beyond one partition's 32767 octets, so it
// is written as a chain of partitions.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "host/image/raster.h"
#include "host/status.h"

namespace subsurf::image {

struct CgmWriteOptions {
  std::string description = "subsurf core row image";  // METAFILE DESCRIPTION
  std::string pictureName = "row";                     // BEGIN PICTURE
};

// Writes the rows of source as a binary CGM to stream. Reasons name no file.
Status writeCgm(RowSource& source, std::FILE* stream, const CgmWriteOptions& options = {});

// One element of a binary metafile, its partitions joined.
struct CgmElement {
  int elementClass = 0;
  int id = 0;
  std::vector<std::uint8_t> parameters;
  int partitions = 1;     // 1 for short-form and single-partition elements
  bool longForm = false;  // written with the long-form command header
};

// Splits a binary metafile into its elements. Fails on a command header or
// partition that runs past the end of the data.
Status parseCgmElements(const std::vector<std::uint8_t>& bytes, std::vector<CgmElement>& out);

// What the reader found around the cell array.
struct CgmPicture {
  int vdcExtent[4] = {0, 0, 0, 0};  // first corner x, y; second corner x, y
  int p[2] = {0, 0};                // cell array corner of the first cell
  int q[2] = {0, 0};                // corner diagonally opposite p
  int r[2] = {0, 0};                // corner at the far end of the first row
  std::string description;
  std::string pictureName;
  int version = 0;
};

// Reads a metafile whose first picture holds a direct-colour, packed CELL
// ARRAY (as writeCgm makes) into out: cells in stored order, the first row
// (the one starting at corner P) as row 0.
Status readCgmCellArray(const std::string& path, Raster& out, CgmPicture* picture = nullptr);

}  // namespace subsurf::image
