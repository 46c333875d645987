// The registry as an SQL script: the statements that create the four tables of
// an equivalent relational schema (database UNITS) and fill them with the rows
// read from the definitions file. Database tools and reports outside the suite
// use it to look units up the same way the suite does.
//
// The statement texts are fixed, irregular spacing included, so that scripts
// written at different times compare line for line.
#include <fmt/format.h>

#include "host/csv_row.h"
#include "host/keyword_file.h"
#include "host/paths.h"
#include "units/units_registry.h"

namespace subsurf {

namespace {

// A text value as an SQL literal (a quote inside is doubled).
std::string quoted(std::string_view text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out.push_back('\'');
    out.push_back(c);
  }
  out.push_back('\'');
  return out;
}

std::string number(double v) { return shortestText(v); }

}  // namespace

std::vector<std::string> UnitsRegistry::sqlScript() const {
  std::vector<std::string> out = {
      "USE UNITS;",
      "CREATE TABLE UNIT_DIMS (",
      "dim_id  int IDENTITY PRIMARY KEY",
      ",dim_name  nvarchar(32) NOT NULL",
      " );",
      "CREATE TABLE UNITS (",
      "unit_id     int IDENTITY PRIMARY KEY",
      ",unit_name   nvarchar(16) NOT NULL",
      ",unit_oname  nvarchar(16) NOT NULL",
      ",unit_dim    int FOREIGN KEY REFERENCES UNIT_DIMS(dim_id)",
      ",unit_nc     int NOT NULL",
      ",unit_c1     float NOT NULL",
      ",unit_c2     float",
      ",unit_c3     float",
      ",unit_c4     float",
      " );",
      "CREATE TABLE SERIES (",
      "ser_id     int IDENTITY PRIMARY KEY",
      ",ser_name   nvarchar(20) NOT NULL",
      ",ser_dim    int FOREIGN KEY REFERENCES UNIT_DIMS(dim_id)",
      ",ser_un_m   nvarchar(16) NOT NULL",
      ",ser_un_of  nvarchar(16) NOT NULL",
      ",ser_un_si  nvarchar(16)",
      " );",
      "CREATE TABLE SERIES_UNITS (",
      "su_id     int IDENTITY(1,1) PRIMARY KEY",
      ",su_name   nvarchar(20) NOT NULL",
      ",su_iser   int FOREIGN KEY REFERENCES SERIES(ser_id)",
      ",su_uid    int FOREIGN KEY REFERENCES UNITS(unit_id)",
      ",su_iun    int NOT NULL",
      ",su_io     int NOT NULL",
      " );",
  };

  // Numbers the file left undefined are not written: the schema's keys are the
  // file's own numbers.
  out.push_back("SET IDENTITY_INSERT UNIT_DIMS ON;");
  for (const UnitDimension& d : dimensions_) {
    if (d.id < 1) continue;
    out.push_back(fmt::format("INSERT INTO UNIT_DIMS (dim_id, dim_name) values ({}, {});", d.id, quoted(d.name)));
  }
  out.push_back("SET IDENTITY_INSERT UNIT_DIMS OFF;");

  out.push_back("SET IDENTITY_INSERT UNITS ON;");
  for (std::size_t k = 0; k < units_.size(); ++k) {
    const UnitDefinition& u = units_[k];
    if (u.nc == 0) continue;
    out.push_back(fmt::format(
        "INSERT INTO UNITS (unit_id, unit_name, unit_oname,  unit_dim, unit_nc, unit_c1, unit_c2, unit_c3,  unit_c4) "
        "values ({}, {}, {}, {}, {}, {}, {}, {}, {});",
        k + 1, quoted(u.name), quoted(u.otherName), u.dimension, u.nc, number(u.c1), number(u.c2), number(u.c3),
        number(u.c4)));
  }
  out.push_back("SET IDENTITY_INSERT UNITS OFF;");

  out.push_back("SET IDENTITY_INSERT SERIES ON;");
  for (std::size_t iser = 0; iser < series_.size(); ++iser) {
    const UnitSeries& s = series_[iser];
    if (s.name.empty()) continue;
    out.push_back(fmt::format(
        "INSERT INTO SERIES (ser_id, ser_name, ser_dim, ser_un_m,  ser_un_of,  ser_un_si) values ({}, {}, {}, {}, {}, "
        "{});",
        iser, quoted(s.name), s.dimension, quoted(s.metricDefault), quoted(s.oilfieldDefault), quoted(s.siDefault)));
  }

  for (std::size_t iser = 0; iser < series_.size(); ++iser) {
    const UnitSeries& s = series_[iser];
    if (s.name.empty()) continue;
    // Every entry the series spans, also those beyond its unit count (which
    // the conversions do not accept but the schema keeps).
    for (int n = s.firstEntry; n <= s.lastEntry; ++n) {
      if (n < 1 || n > static_cast<int>(entries_.size())) continue;
      const SeriesEntry& e = entries_[static_cast<std::size_t>(n - 1)];
      if (e.unitId < 1) continue;  // an entry the file left undefined or pointing nowhere
      out.push_back(fmt::format(
          "INSERT INTO SERIES_UNITS (su_name, su_iser, su_uid,  su_iun,  su_io) values ({}, {}, {}, {}, {});",
          quoted(s.name), iser, e.unitId, n - s.firstEntry + 1, e.listing));
    }
  }
  return out;
}

Status UnitsRegistry::writeSqlScript(const std::string& path) const {
  if (!ensureParentFolder(path)) return Status::error("Cannot create the folder of " + path);
  KeywordFileWriter file;
  if (Status s = file.open(path); !s) return s;
  for (const std::string& line : sqlScript()) file.writeLine(line);
  return file.commit();
}

}  // namespace subsurf
