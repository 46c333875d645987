// The SQL script of the registry: the schema's fixed statements and one insert
// per row, compared line for line.
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "subsurf/units.h"
#include "support/temp_dir.h"
#include "units/units_registry.h"
#include "units_test_support.h"

namespace subsurf {
namespace {

using testing::TempDir;

const std::vector<std::string> kSchema = {
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

std::vector<std::string> fileLines(const std::string& path) {
  std::vector<std::string> lines;
  std::string text = TempDir::read(path), line;
  for (char c : text) {
    if (c == '\n') {
      lines.push_back(line);
      line.clear();
    } else {
      line.push_back(c);
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

TEST(UnitsSqlScript, SchemaAndRowsOfASmallRegistry) {
  TempDir dir;
  UnitsRegistry reg;
  ASSERT_TRUE(reg.load(dir.write("small.def",
                                 "**Dimensions\n1,temperature\n"
                                 "**Units\n1,degk,kelvin,1,1,1\n2,degc,O'Celsius,1,2,1,273.15\n"
                                 "**Series\n0,temperature,1,1,2,2,degc,degk,degk\n"
                                 "**Entries\n1,2,0,0\n2,1,0,1\n"))
                  .isOk());
  std::vector<std::string> expected = kSchema;
  const std::vector<std::string> rows = {
      "SET IDENTITY_INSERT UNIT_DIMS ON;",
      "INSERT INTO UNIT_DIMS (dim_id, dim_name) values (1, 'temperature');",
      "SET IDENTITY_INSERT UNIT_DIMS OFF;",
      "SET IDENTITY_INSERT UNITS ON;",
      "INSERT INTO UNITS (unit_id, unit_name, unit_oname,  unit_dim, unit_nc, unit_c1, unit_c2, unit_c3,  unit_c4) "
      "values (1, 'degk', 'kelvin', 1, 1, 1, 0, 1, 1);",
      "INSERT INTO UNITS (unit_id, unit_name, unit_oname,  unit_dim, unit_nc, unit_c1, unit_c2, unit_c3,  unit_c4) "
      "values (2, 'degc', 'O''Celsius', 1, 2, 1, 273.15, 1, 1);",
      "SET IDENTITY_INSERT UNITS OFF;",
      "SET IDENTITY_INSERT SERIES ON;",
      "INSERT INTO SERIES (ser_id, ser_name, ser_dim, ser_un_m,  ser_un_of,  ser_un_si) values (0, 'temperature', 1, "
      "'degc', 'degk', 'degk');",
      "INSERT INTO SERIES_UNITS (su_name, su_iser, su_uid,  su_iun,  su_io) values ('temperature', 0, 2, 1, 0);",
      "INSERT INTO SERIES_UNITS (su_name, su_iser, su_uid,  su_iun,  su_io) values ('temperature', 0, 1, 2, 1);",
  };
  expected.insert(expected.end(), rows.begin(), rows.end());
  EXPECT_EQ(reg.sqlScript(), expected);

  const std::string out = dir.file("sql/out.sql");
  ASSERT_TRUE(reg.writeSqlScript(out).isOk());
  EXPECT_EQ(fileLines(out), expected);
}

TEST(UnitsSqlScript, ExportWritesCreateUnitsUnderTempdirSql) {
  TempDir dir;
  const char* before = std::getenv("SUBSURF_TEMPDIR");
  const std::string saved = before ? before : "";
  ::setenv("SUBSURF_TEMPDIR", dir.path().c_str(), 1);
  host::clearRecorded();
  X_SQLSCRIPT();
  if (before) ::setenv("SUBSURF_TEMPDIR", saved.c_str(), 1);
  else ::unsetenv("SUBSURF_TEMPDIR");

  EXPECT_TRUE(host::recordedMessages().empty());
  const std::vector<std::string> lines = fileLines(dir.file("sql/create_units.sql"));
  ASSERT_GT(lines.size(), kSchema.size());
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + static_cast<long>(kSchema.size())), kSchema);
  EXPECT_EQ(lines, unitsRegistry().sqlScript());
}

}  // namespace
}  // namespace subsurf
