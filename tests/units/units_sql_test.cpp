// The SQL script of the registry: the schema's fixed statements and one insert
// per row, compared line for line.
#include <algorithm>
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

using testing::linesOf;
using testing::TempDir;

// The schema, one table a source line; split into lines where used.
const char* const kSchema =
    "USE UNITS;\n"
    "CREATE TABLE UNIT_DIMS (\ndim_id  int IDENTITY PRIMARY KEY\n,dim_name  nvarchar(32) NOT NULL\n );\n"
    "CREATE TABLE UNITS (\nunit_id     int IDENTITY PRIMARY KEY\n,unit_name   nvarchar(16) NOT NULL\n"
    ",unit_oname  nvarchar(16) NOT NULL\n,unit_dim    int FOREIGN KEY REFERENCES UNIT_DIMS(dim_id)\n"
    ",unit_nc     int NOT NULL\n,unit_c1     float NOT NULL\n,unit_c2     float\n,unit_c3     float\n"
    ",unit_c4     float\n );\n"
    "CREATE TABLE SERIES (\nser_id     int IDENTITY PRIMARY KEY\n,ser_name   nvarchar(20) NOT NULL\n"
    ",ser_dim    int FOREIGN KEY REFERENCES UNIT_DIMS(dim_id)\n,ser_un_m   nvarchar(16) NOT NULL\n"
    ",ser_un_of  nvarchar(16) NOT NULL\n,ser_un_si  nvarchar(16)\n );\n"
    "CREATE TABLE SERIES_UNITS (\nsu_id     int IDENTITY(1,1) PRIMARY KEY\n,su_name   nvarchar(20) NOT NULL\n"
    ",su_iser   int FOREIGN KEY REFERENCES SERIES(ser_id)\n,su_uid    int FOREIGN KEY REFERENCES UNITS(unit_id)\n"
    ",su_iun    int NOT NULL\n,su_io     int NOT NULL\n );\n";

TEST(UnitsSqlScript, SchemaAndRowsOfASmallRegistry) {
  TempDir dir;
  UnitsRegistry reg;
  ASSERT_TRUE(reg.load(dir.write("small.def",
                                 "**Dimensions\n1,temperature\n"
                                 "**Units\n1,degk,kelvin,1,1,1\n2,degc,O'Celsius,1,2,1,273.15\n"
                                 "**Series\n0,temperature,1,1,2,2,degc,degk,degk\n"
                                 "**Entries\n1,2,0,0\n2,1,0,1\n"))
                  .isOk());
  std::vector<std::string> expected = linesOf(kSchema);
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
  EXPECT_EQ(linesOf(TempDir::read(out)), expected);
}

// A series may span more entries than its unit count admits: the schema holds
// every entry, with its position, and the conversions still refuse the extra ones.
TEST(UnitsSqlScript, EveryEntryOfASeriesHasItsRow) {
  TempDir dir;
  UnitsRegistry reg;
  ASSERT_TRUE(reg.load(dir.write("spare.def",
                                 "**Dimensions\n1,length\n"
                                 "**Units\n1,m,metre,1,1,1\n2,ft,feet,1,1,0.3048\n3,in,inch,1,1,0.0254\n"
                                 "**Series\n0,depth,1,1,3,2,m,ft,m\n"
                                 "**Entries\n1,1,0,0\n2,2,0,0\n3,3,0,1\n"))
                  .isOk());
  ASSERT_EQ(reg.unitCount(0), 3);
  const std::vector<std::string> script = reg.sqlScript();
  const std::vector<std::string> tail(script.end() - 3, script.end());
  const std::string insert = "INSERT INTO SERIES_UNITS (su_name, su_iser, su_uid,  su_iun,  su_io) values ";
  EXPECT_EQ(tail, (std::vector<std::string>{insert + "('depth', 0, 1, 1, 0);", insert + "('depth', 0, 2, 2, 0);",
                                            insert + "('depth', 0, 3, 3, 1);"}));
  int err = 0;
  EXPECT_EQ(reg.convert(1.0, 0, 3, 1, err), 1.0);  // beyond the unit count: no unit
  EXPECT_EQ(err, 1);
}

TEST(UnitsSqlScript, ExportWritesCreateUnitsUnderTempdirSql) {
  TempDir dir;
  {
    testing::ScopedEnv tempdir("SUBSURF_TEMPDIR", dir.path());
    host::clearRecorded();
    X_SQLSCRIPT();
  }

  EXPECT_TRUE(host::recordedMessages().empty());
  const std::vector<std::string> lines = linesOf(TempDir::read(dir.file("sql/create_units.sql")));
  ASSERT_GT(lines.size(), linesOf(kSchema).size());
  EXPECT_EQ(lines, unitsRegistry().sqlScript());

  // The whole shipped registry: the schema, then one insert per dimension,
  // unit, series and series entry, each kind between its own statements.
  const UnitsRegistry& reg = unitsRegistry();
  const std::vector<std::string> schema = linesOf(kSchema);
  ASSERT_TRUE(std::equal(schema.begin(), schema.end(), lines.begin()));
  auto count = [&](const std::string& prefix) {
    return std::count_if(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
  };
  std::size_t entries = 0;
  for (int iser = 0; iser <= reg.lastSeries(); ++iser) entries += static_cast<std::size_t>(reg.unitCount(iser));
  EXPECT_EQ(count("INSERT INTO UNIT_DIMS (dim_id, dim_name) values ("), static_cast<long>(reg.dimensions().size()));
  EXPECT_EQ(count("INSERT INTO UNITS (unit_id, unit_name, unit_oname,  unit_dim, unit_nc, unit_c1, unit_c2, unit_c3,  "
                  "unit_c4) values ("),
            static_cast<long>(reg.units().size()));
  EXPECT_EQ(count("INSERT INTO SERIES (ser_id, ser_name, ser_dim, ser_un_m,  ser_un_of,  ser_un_si) values ("),
            reg.lastSeries() + 1);
  EXPECT_EQ(count("INSERT INTO SERIES_UNITS (su_name, su_iser, su_uid,  su_iun,  su_io) values ("),
            static_cast<long>(entries));
  EXPECT_EQ(lines.size(), schema.size() + 5 + reg.dimensions().size() + reg.units().size() +
                              static_cast<std::size_t>(reg.lastSeries() + 1) + entries);
  EXPECT_EQ(lines[schema.size() + 1],
            "INSERT INTO UNIT_DIMS (dim_id, dim_name) values (1, 'dimensionless');");
  EXPECT_NE(std::find(lines.begin(), lines.end(),
                      "INSERT INTO UNITS (unit_id, unit_name, unit_oname,  unit_dim, unit_nc, unit_c1, unit_c2, "
                      "unit_c3,  unit_c4) values (18, 'psig', 'psi gauge', 3, 2, 6894.757293168362, "
                      "14.695948775513449, 1, 1);"),
            lines.end());
}

}  // namespace
}  // namespace subsurf
