#include "core/image_settings.h"

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "units/units_registry.h"

namespace subsurf {

namespace {

struct IntLabel {
  const char* key;
  const char* label;
  const char* description;
};

// The integer settings in order; the labels are the image grid's headings and
// the keys name the rows of the session file.
constexpr IntLabel kIntLabels[kImageIntCount] = {
    {"uv", "UV", "1 = photographed under ultraviolet light"},
    {"viewed", "Viewed", "1 once the photograph has been shown"},
    {"use", "Use", "0 leaves the image out of processing"},
    {"core_number", "Core Number", "Number of core rows in the tray"},
    {"reverse", "Reverse", "1 depth reversed; 2 long core, no limit"},
    {"override", "Override", "1 = image options win over the session's"},
    {"cgm", "CGM", "1 = write metafiles for this image"},
    {"horizontal", "Horizontal", "1 = rows run across the photograph"},
    {"pixel_width", "Pixel Width", "Photo width in pixels when drawn"},
    {"pixel_height", "Pixel Height", "Photo height in pixels when drawn"},
};

struct RealLabel {
  std::string code, label, shortText, description;
};

RealLabel realLabel(int k) {
  switch (k) {
    case kRealTop: return {"top_depth", "Top Depth", "Top", "Top depth of the tray"};
    case kRealBase: return {"base_depth", "Base Depth", "Base", "Base depth of the tray"};
    case kRealCoreLength: return {"core_length", "Core Length", "Core Len", "Length of one core row"};
    case kRealTrayLength: return {"tray_length", "Tray Length", "Tray Len", "Base depth minus top depth"};
    case kRealDepthShift:
      return {"depth_shift", "Depth Shift", "Shift", "Shift carried from tray to tray"};
    default: break;
  }
  // Rows: setting 3 + 2r is the top of row r, 4 + 2r its base. Rows 11 to 13
  // share 25 to 30 (25 is also the depth shift).
  const int row = (k - 3) / 2;
  const bool top = (k % 2) == 1;
  return {fmt::format("row{}_{}", row, top ? "top" : "base"), fmt::format("Row {} {}", row, top ? "Top" : "Base"),
          fmt::format("{} {}", top ? "Top" : "Base", row),
          fmt::format("{} depth of core row {}", top ? "Top" : "Base", row)};
}

const std::string& blankUnit() {
  static const std::string blanks(16, ' ');
  return blanks;
}

std::string padded(std::string_view text, std::size_t width) {
  std::string s(text.substr(0, width));
  s.resize(width, ' ');
  return s;
}

void defaultDepth(DT_RSCA& rec, int iser) {
  DT_RSCADFLT(&rec);
  const std::string unit = padded(kDefaultDepthUnit, 16);
  DT_RSCASETVU(&rec, &iser, unit.c_str());
  if (iser < 0) {
    // Without a units registry the record still says which unit its depths
    // are in, so that they read back correctly once units are available.
    setFixed(rec.VU.CU, kDefaultDepthUnit);
    rec.VU.IUN = 1;
  }
}

}  // namespace

void setUpImageSettings(CoreImage& image) {
  const int inull = kIntNull;
  for (int k = 1; k <= kImageIntCount; ++k) {
    DT_ISCA& rec = image.intSetting(k);
    DT_ISCADFLT(&rec, &inull, &inull, &inull);
    const IntLabel& l = kIntLabels[k - 1];
    setFixed(rec.KEY, l.key);
    setFixed(rec.CODE, l.key);
    setFixed(rec.LABEL, l.label);
    setFixed(rec.SHORT, l.label);
    setFixed(rec.DESC, l.description);
  }

  const int iser = unitsRegistry().findSeries(kDepthSeries);
  for (int k = 1; k <= kImageRealCount; ++k) {
    DT_RSCA& rec = image.realSetting(k);
    defaultDepth(rec, iser);
    const RealLabel l = realLabel(k);
    setFixed(rec.CODE, l.code);
    setFixed(rec.LABEL, l.label);
    setFixed(rec.SHORT, l.shortText);
    setFixed(rec.DESC, l.description);
  }
  defaultDepth(image.coreLengthCopy, iser);
  DT_RSCACOPY(&image.realSetting(kRealCoreLength), &image.coreLengthCopy);
  defaultDepth(image.trayLengthCopy, iser);
  DT_RSCACOPY(&image.realSetting(kRealTrayLength), &image.trayLengthCopy);

  for (int k = 1; k <= kImageFileCount; ++k) {
    DT_FSCA& rec = image.files[k - 1];
    setFixed(rec.CODE, k == 1 ? std::string("source") : fmt::format("file{}", k));
    setFixed(rec.LABEL, k == 1 ? std::string("Source") : fmt::format("File {}", k));
  }
  for (int k = 1; k <= kImageTextCount; ++k) {
    DT_CSCA& rec = image.texts[k - 1];
    setFixed(rec.CODE, fmt::format("text{}", k));
    setFixed(rec.LABEL, fmt::format("Text {}", k));
  }
}

void setUpPolygonProperties(Polygon& polygon) {
  struct Prop {
    const char* key;
    const char* label;
    int vdef;
  };
  // Outlines are drawn as single closed components of type 1 (a polygon
  // drawn by the user), counted positive, in colour 2 (red) one pixel wide.
  static constexpr Prop kProps[6] = {
      {"status", "Status", 0},       {"components", "Components", 1},
      {"type", "Type", 1},           {"area_sign", "Area Sign (+ve/-ve)", 1},
      {"colour", "Colour", 2},       {"thickness", "Thickness", 1},
  };
  const int inull = kIntNull;
  for (int i = 0; i < 6; ++i) {
    DT_ISCA& rec = polygon.props[i];
    DT_ISCADFLT(&rec, &inull, &inull, &kProps[i].vdef);
    setFixed(rec.KEY, kProps[i].key);
    setFixed(rec.CODE, kProps[i].key);
    setFixed(rec.LABEL, kProps[i].label);
    setFixed(rec.SHORT, kProps[i].label);
  }
}

void setDepth(DT_RSCA& record, float value, std::string_view unit) {
  const std::string name = unit.empty() ? blankUnit() : padded(unit, 16);
  const int state = kScalarChanged;
  DT_RSCASETC(&record, name.c_str(), &value, &state);
}

std::string depthUnitOf(const DT_RSCA& record) { return fixedText(record.VU.CU); }

void setInteger(DT_ISCA& record, int value) {
  record.V = value;
  record.SET = kScalarChanged;
}

}  // namespace subsurf
