// Keyword rows of typed scalars: layouts, round trips of the row form and the
// formatted form for every kind, reading rules, and the C routines on files.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/host.h"
#include "subsurf/scalars.h"
#include "support/temp_dir.h"
#include "units/keyword_rows.h"
#include "units/scalar_records.h"
#include "units/units_registry.h"
#include "units_test_support.h"

using namespace subsurf;
using subsurf::testing::linesOf;

namespace {

int depthSeries() { return unitsRegistry().findSeries("depth"); }
int unitOf(const char* name) { return unitsRegistry().findUnit(depthSeries(), name); }
// The depth series and the position of feet in it, as a row or record writes them.
std::string depthFeet(const char* sep = ",") {
  return std::to_string(depthSeries()) + sep + std::to_string(unitOf("ft"));
}

DT_RSCA topDepth() {
  DT_RSCA r = makeReal("top", depthSeries(), "ft", 1234.5f);
  r.SET = DT_STATE_ENTERED;
  r.RELERR = 0.03f;
  r.FMT = -5;
  labelReal(r, "top", "Top depth", "It's the top, \"roughly\"", "tp");
  DT_SETRCHU(&r);
  return r;
}

DT_DSCA spudDate() {
  DT_DSCA d = makeDouble("spud", -1, "", 4.8712345678901e9);
  d.SET = DT_STATE_CALCULATED;
  d.SET2 = DT_FIXED;
  d.RELERR = 1.0e-9;
  d.FMT = 3;
  d.IEXTRA = 17;
  labelDouble(d, "spud", "Spud date", "Day the well was spudded", "dd mon yyyy hr:min");
  DT_SETDCHU(&d);
  return d;
}

DT_ISCA coreCount() {
  DT_ISCA i = makeInteger("ncores", 4, 1, 20);
  i.SET = DT_STATE_ENTERED;
  i.SET2 = DT_FIXED;
  labelInteger(i, "ncores", "Number of cores", "Core rows in each tray", "ncor");
  return i;
}

DT_CSCA rootName() {
  DT_CSCA c = makeText("rootname", "  well 7, tray 'A'");
  c.SET = DT_STATE_ENTERED;
  labelText(c, "rootname", "Root name", "Start of, \"every\" output name");
  setFixed(c.VDEF, "core");
  return c;
}

DT_FSCA photo() {
  DT_FSCA f = makeFileName("photo", "userlib:photos/" + std::string(230, 'p') + ",1.jpg");
  f.SET = 0;
  labelFileName(f, "photo", "Photograph", "The tray photograph");
  setFixed(f.VDEF, "userlib:blank.jpg");
  return f;
}

// Two records hold the same saved contents when they write the same row; the
// display text of real kinds is compared too, as the reader rebuilds it.
CsvRow rowOf(const DT_RSCA& r) { return realRow(r); }
CsvRow rowOf(const DT_DSCA& d) { return doubleRow(d); }
CsvRow rowOf(const DT_ISCA& i) { return integerRow(i); }
CsvRow rowOf(const DT_CSCA& c) { return textRow(c); }
CsvRow rowOf(const DT_FSCA& f) { return fileNameRow(f); }
template <typename R>
void expectSame(const R& a, const R& b) {
  EXPECT_EQ(rowOf(a).str(), rowOf(b).str());
  if constexpr (requires { a.CHU; }) { EXPECT_EQ(fixedText(a.CHU), fixedText(b.CHU)); }
}

// A row as it comes back from a file: written out as text and parsed again.
CsvRow throughText(const CsvRow& row) { return CsvRow::parse(row.str()); }

CsvRow throughRecord(const std::string& line) {
  CsvRow row;
  EXPECT_TRUE(readFormattedRecord(line, row)) << line;
  return row;
}

}  // namespace

// ---- Layout ------------------------------------------------------------------

TEST(ScalarRowLayout, KeyIsIndentedByLevelMinusOne) {
  const DT_RSCA r = topDepth();
  EXPECT_EQ(realRow(r, 1).field(1), "top");
  EXPECT_EQ(realRow(r, 3).field(1), "  top");
  EXPECT_EQ(realRow(r, 9).field(1), std::string(8, ' ') + "top");
  EXPECT_EQ(realRow(r, 1).str().substr(0, 6), "top,4,");
  // The blanks survive the text form because the key is then quoted.
  EXPECT_EQ(realRow(r, 3).str().substr(0, 10), "\"  top\",4,");
  EXPECT_EQ(rowKey(throughText(realRow(r, 3))), "top");
  EXPECT_EQ(rowLevel(throughText(realRow(r, 3))), 3);
  EXPECT_EQ(rowLevel(throughText(realRow(r, 1))), 1);
}

TEST(ScalarRowLayout, TagAndWidthOfEveryKind) {
  const std::tuple<CsvRow, int, std::size_t> rows[] = {{integerRow(coreCount()), kIntegerTag, 5}, {textRow(rootName()), 2, 8},
                                                       {fileNameRow(photo()), 3, 8}, {realRow(topDepth()), 4, 12},
                                                       {doubleRow(spudDate()), 5, 14}};
  for (const auto& [row, tag, size] : rows) {
    EXPECT_EQ(rowTag(row), tag) << row.str();
    EXPECT_EQ(row.size(), size) << row.str();
  }
  EXPECT_EQ(rowTag(CsvRow::parse("version,2.11a")), 0);
  EXPECT_EQ(kIntegerTag, 1);
  // The unit goes by name and by position; key, tag, value and two states for an integer.
  EXPECT_EQ(realRow(topDepth(), 1).str(),
            "top,4,1234.5,ft," + depthFeet() + ",1,0,0.03,Top depth,\"It's the top, \"\"roughly\"\"\",-5");
  EXPECT_EQ(integerRow(coreCount(), 2).str(), "\" ncores\",1,4,1,1");
}

TEST(ScalarRowLayout, FormattedRecordBeginsWithTheTag) {
  EXPECT_EQ(integerRecord(coreCount()), "1 'ncores' 4 1 1");
  const std::string expected = "4 'top' 1234.5 'ft' " + depthFeet(" ") + " 1 0 0.03 'Top depth' 'It''s the top, \"roughly\"' -5";
  EXPECT_EQ(realRecord(topDepth()), expected);
  // Writers at level 0 or above 9 produce the formatted record, 1..9 the row.
  EXPECT_EQ(scalarLine(coreCount(), 0), integerRecord(coreCount()));
  EXPECT_EQ(scalarLine(coreCount(), 10), integerRecord(coreCount()));
  EXPECT_EQ(scalarLine(coreCount(), 1), integerRow(coreCount(), 1).str());
  EXPECT_EQ(scalarLine(coreCount(), 9), integerRow(coreCount(), 9).str());
}

TEST(ScalarRowLayout, StructuredBlocks) {
  const DT_RSCA r = topDepth();
  const std::vector<std::string> expected = {
      "IV, D%V, D%SET, D%VU%ISER, D%VU%IUN, D%VU%CU",
      "4, 1234.5, 1, " + depthFeet(", ") + ", ft"};
  EXPECT_EQ(realBlock(r), expected);
  EXPECT_EQ(integerBlock(coreCount()), (std::vector<std::string>{"IV, D%V, D%SET", "1, 4, 1"}));
}

// ---- Round trips -----------------------------------------------------------------

// Writes the record as rows at several levels and as a formatted record, reads
// each back into a fresh record, and expects the same contents.
template <typename R, typename Row, typename Record, typename Read>
void expectRoundTrips(const R& original, const R& fresh, Row row, Record record, Read read) {
  for (int level : {1, 4, 9}) {
    R back = fresh;
    const RowRead result = read(throughText(row(original, level)), back);
    EXPECT_TRUE(result.ok()) << result.message;
    expectSame(back, original);
  }
  R back = fresh;
  EXPECT_TRUE(read(throughRecord(record(original)), back).ok());
  expectSame(back, original);
}

TEST(ScalarRowRoundTrip, EveryKindThroughItsRowAndItsFormattedRecord) {
  expectRoundTrips(topDepth(), makeReal("", -1, "", 0.0f), realRow, realRecord, readRealRow);
  expectRoundTrips(spudDate(), makeDouble("", -1, "", 0.0), doubleRow, doubleRecord, readDoubleRow);
  expectRoundTrips(coreCount(), makeInteger("", 0, 1, 20), integerRow, integerRecord, readIntegerRow);
  expectRoundTrips(rootName(), makeText("", ""), textRow, textRecord, readTextRow);
  expectRoundTrips(photo(), makeFileName("", ""), fileNameRow, fileNameRecord, readFileNameRow);
}

TEST(ScalarRowRoundTrip, NullsAndExtremesSurviveBitForBit) {
  DT_RSCA r = makeReal("empty", -1, "", kRealNull);
  r.VU.IUN = 0;
  DT_RSCA back;
  DT_RSCADFLT(&back);
  ASSERT_TRUE(readRealRow(throughText(realRow(r)), back).ok());
  EXPECT_EQ(back.V, kRealNull);
  EXPECT_EQ(back.RELERR, kRealNull);
  EXPECT_EQ(back.VU.IUN, 0);
  EXPECT_EQ(fixedText(back.VU.CU), "");
  EXPECT_EQ(fixedText(back.CHU), "");

  r.V = 0.1f;
  ASSERT_TRUE(readRealRow(throughRecord(realRecord(r)), back).ok());
  EXPECT_EQ(back.V, 0.1f);
  r.V = 3.4028235e38f;
  ASSERT_TRUE(readRealRow(throughText(realRow(r)), back).ok());
  EXPECT_EQ(back.V, 3.4028235e38f);

  DT_DSCA d = makeDouble("d", -1, "", 0.1);
  DT_DSCA dback;
  ASSERT_TRUE(readDoubleRow(throughText(doubleRow(d)), dback).ok());
  EXPECT_EQ(dback.V, 0.1);
  EXPECT_EQ(dback.RELERR, kDoubleNull);

  DT_ISCA i = makeInteger("n", kIntNull, 0, 0);
  DT_ISCA iback = makeInteger("", 0, 0, 0);
  ASSERT_TRUE(readIntegerRow(throughText(integerRow(i)), iback).ok());
  EXPECT_EQ(iback.V, kIntNull);
}

// ---- Reading rules ---------------------------------------------------------------

TEST(ScalarRowReading, RowEndingBeforeColumnNineHasNullRelativeError) {
  const CsvRow row = CsvRow::parse("top,4,12.5,ft," + depthFeet() + ",1,0");
  DT_RSCA r = topDepth();  // holds a relative error before reading
  const RowRead result = readRealRow(row, r);
  EXPECT_TRUE(result.ok()) << result.message;
  EXPECT_EQ(r.V, 12.5f);
  EXPECT_EQ(r.RELERR, kRealNull);
  EXPECT_EQ(r.FMT, -4);  // defaulted, as the row has no format word
  EXPECT_EQ(fixedText(r.LABEL), "");
  EXPECT_EQ(fixedText(r.CHU), "12.5");
  EXPECT_EQ(fixedText(r.CODE), "top");
}

TEST(ScalarRowReading, DisplayTextIsRebuiltNotRead) {
  const CsvRow row = CsvRow::parse("  \"   top\" ,4, 1234.5 ,ft,-1,1,1,0,0.1,Top,,-4");
  DT_RSCA r;
  ASSERT_TRUE(readRealRow(row, r).ok());
  EXPECT_EQ(fixedText(r.CHU), "1234.5 +/- 10%");
  EXPECT_EQ(fixedText(r.CODE), "top");  // indentation is not part of the code
  EXPECT_EQ(fixedText(r.DESC), "");
}

TEST(ScalarRowReading, PositionIsTakenFromItsColumnAsWritten) {
  // Saved as metres but with the position of feet: the position stands, the
  // name is kept as written beside it.
  const CsvRow row = CsvRow::parse("top,4,10,m," + depthFeet() + ",1,0");
  ASSERT_NE(unitOf("m"), unitOf("ft"));
  DT_RSCA r;
  ASSERT_TRUE(readRealRow(row, r).ok());
  EXPECT_EQ(r.VU.IUN, unitOf("ft"));
  EXPECT_EQ(fixedText(r.VU.CU), "m");
  EXPECT_EQ(r.V, 10.0f);
  DT_DSCA d;
  ASSERT_TRUE(readDoubleRow(CsvRow::parse("spud,5,10,m," + depthFeet() + ",1,0"), d).ok());
  EXPECT_EQ(d.VU.IUN, unitOf("ft"));

  // A name the series does not know leaves the saved position too.
  const CsvRow odd = CsvRow::parse("top,4,10,furlong," + std::to_string(depthSeries()) + ",2,1,0");
  ASSERT_TRUE(readRealRow(odd, r).ok());
  EXPECT_EQ(r.VU.IUN, 2);
  EXPECT_EQ(fixedText(r.VU.CU), "furlong");
}

TEST(ScalarRowReading, RowOfAnotherKindLeavesTheRecordAlone) {
  DT_RSCA r = topDepth();
  const DT_RSCA before = r;
  const RowRead result = readRealRow(integerRow(coreCount()), r);
  EXPECT_EQ(result.status, RowRead::kWrongKind);
  EXPECT_EQ(result.message, "Row \"ncores\" is not a real scalar row");
  EXPECT_EQ(std::memcmp(&r, &before, sizeof r), 0);

  DT_ISCA i = coreCount();
  EXPECT_EQ(readIntegerRow(CsvRow::parse("version,2.11a"), i).status, RowRead::kWrongKind);
  EXPECT_EQ(readIntegerRow(CsvRow(), i).status, RowRead::kWrongKind);
  DT_CSCA c = rootName();
  EXPECT_EQ(readTextRow(fileNameRow(photo()), c).status, RowRead::kWrongKind);
  DT_FSCA f = photo();
  EXPECT_EQ(readFileNameRow(textRow(rootName()), f).status, RowRead::kWrongKind);
  DT_DSCA d = spudDate();
  EXPECT_EQ(readDoubleRow(realRow(topDepth()), d).status, RowRead::kWrongKind);
}

TEST(ScalarRowReading, FieldThatIsNotANumberKeepsItsDefault) {
  DT_RSCA r;
  const RowRead result = readRealRow(CsvRow::parse("top,4,abc,ft,-1,x,1,0,0.5"), r);
  EXPECT_EQ(result.status, RowRead::kPartial);
  EXPECT_EQ(result.message, "Row \"top\": column 3 is not a number");
  EXPECT_EQ(r.V, kRealNull);
  EXPECT_EQ(r.VU.IUN, 1);  // column 6 unreadable too: default
  EXPECT_EQ(r.SET, 1);     // the rest is read
  EXPECT_EQ(r.RELERR, 0.5f);
}

TEST(ScalarRowReading, IntegerRecordKeepsWhatItsRowDoesNotCarry) {
  DT_ISCA i = makeInteger("", 9, -5, 50);
  labelInteger(i, "", "Kept label", "Kept description", "kept");
  ASSERT_TRUE(readIntegerRow(CsvRow::parse("\"   ncores\",1,6,1,0"), i).ok());
  EXPECT_EQ(i.V, 6);
  EXPECT_EQ(fixedText(i.KEY), "ncores");
  EXPECT_EQ(i.VMIN, -5);
  EXPECT_EQ(i.VMAX, 50);
  EXPECT_EQ(i.VDEF, 9);
  EXPECT_EQ(fixedText(i.LABEL), "Kept label");
  EXPECT_EQ(fixedText(i.CODE), "kept");
}

TEST(ScalarRowReading, TextRowsAreDefaultedFirst) {
  DT_CSCA c = rootName();
  ASSERT_TRUE(readTextRow(CsvRow::parse("root,2,tray"), c).ok());
  EXPECT_EQ(fixedText(c.V), "tray");
  EXPECT_EQ(c.SET, -1);
  EXPECT_EQ(fixedText(c.LABEL), "");
  EXPECT_EQ(fixedText(c.VDEF), "");
}

TEST(ScalarRowReading, FormattedRecordsThatAreNotRecords) {
  CsvRow row;
  for (const char* line : {"", "4", "'top' 4 1.5", "4 top 1.5", "x 'top'", "4 'top' 'unclosed"})
    EXPECT_FALSE(readFormattedRecord(line, row)) << line;
  ASSERT_TRUE(readFormattedRecord("  4   'a b'   7  ''  ", row));
  EXPECT_EQ(row.size(), 4u);
  EXPECT_EQ(row.field(1), "a b");
  EXPECT_EQ(row.field(3), "7");
  EXPECT_EQ(row.field(4), "");
}

// ---- The C routines on keyword files ---------------------------------------------

namespace {

struct Padded {
  std::string text;
  Padded(std::string_view s, std::size_t width) : text(s) { text.resize(width, ' '); }
  const char* c_str() const { return text.c_str(); }
};

int openChannel(const std::string& path, const char* mode) {
  int channel = -1, status = -1;
  KJF_OPEN(&channel, Padded(path, 260).c_str(), Padded(mode, 16).c_str(), &status);
  EXPECT_EQ(status, 0) << path;
  return channel;
}

void closeChannel(int channel) {
  int status = -1;
  KJF_CLOS(&channel, Padded("RELEASE", 16).c_str(), &status);
  EXPECT_EQ(status, 0);
}

}  // namespace

TEST(ScalarRowFiles, WritersAndReadersOnChannelsRoundTrip) {
  subsurf::testing::TempDir dir;
  const std::string path = dir.file("settings.kwf");
  const DT_RSCA r = topDepth();
  const DT_DSCA d = spudDate();
  const DT_ISCA i = coreCount();
  const DT_CSCA c = rootName();
  const DT_FSCA f = photo();

  const int out = openChannel(path, "WRITE");
  const int one = 1, three = 3, two = 2;
  DT_RSCAWRITE(&r, &out, &one, nullptr);
  DT_WRITER(&r, &out, &three, &two);
  DT_ISCAWRITE(&i, &out, &two, nullptr);
  DT_DSCAWRITE(&d, &out, &one, nullptr);
  DT_CSCAWRITE(&c, &out, &one, nullptr);
  DT_WRITEF(&f, &out, &one, nullptr);
  closeChannel(out);

  const std::vector<std::string> lines = linesOf(subsurf::testing::TempDir::read(path));
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0], realRow(r, 1).str());
  EXPECT_EQ(lines[1].substr(0, 10), "\"  top\",4,");
  EXPECT_EQ(lines[2], "\" ncores\",1,4,1,1");

  const int in = openChannel(path, "READ");
  // Loads the next row and reads it with the given routine into a fresh record;
  // expects status 0 and the original's contents.
  auto next = [&](const char* routine, auto read, auto back, const auto& original) {
    int status = -9;
    A_LOADCSV(&in, &status);
    read(&back, &in, &status);
    SCOPED_TRACE(routine);
    EXPECT_EQ(status, 0);
    expectSame(back, original);
  };
  DT_RSCA fresh;
  DT_DSCA dfresh;
  next("DT_RSCAREAD", DT_RSCAREAD, fresh, r);
  next("DT_READR", DT_READR, fresh, r);
  next("DT_ISCAREAD", DT_ISCAREAD, makeInteger("", 0, 1, 20), i);
  next("DT_DSCAREAD", DT_DSCAREAD, dfresh, d);
  next("DT_READC", DT_READC, makeText("", ""), c);
  next("DT_FSCAREAD", DT_FSCAREAD, makeFileName("", ""), f);

  // Past the end there is no row: nothing is read.
  DT_RSCA r2 = r;
  int status = -9;
  A_LOADCSV(&in, &status);
  DT_RSCAREAD(&r2, &in, &status);
  EXPECT_EQ(status, 1);
  expectSame(r2, r);
  closeChannel(in);
}

TEST(ScalarRowFiles, ReaderReportsARowOfAnotherKind) {
  subsurf::testing::TempDir dir;
  const std::string path = dir.write("mixed.kwf", "ncores,1,4,1,0\ntop,4,oops,ft,-1,1,1,0\n");
  const int in = openChannel(path, "READ");
  int status = -9;
  A_LOADCSV(&in, &status);
  DT_RSCA r = topDepth();
  const DT_RSCA before = r;
  DT_RSCAREAD(&r, &in, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(std::memcmp(&r, &before, sizeof r), 0);
  A_LOADCSV(&in, &status);
  DT_RSCAREAD(&r, &in, &status);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(r.V, kRealNull);
  closeChannel(in);
}

TEST(ScalarRowFiles, FormattedRecordsAndBlocksAndOpenRows) {
  subsurf::testing::TempDir dir;
  const std::string path = dir.file("listing.txt");
  const DT_RSCA r = topDepth();
  const DT_ISCA i = coreCount();
  const DT_CSCA c = rootName();
  const int out = openChannel(path, "WRITE");
  const int zero = 0, ten = 10, one = 1, leaveOpen = 1, appendAndClose = 2, extra = 99;
  DT_RSCAWRITE(&r, &out, &zero, nullptr);
  DT_WRITEI(&i, &out, &ten, nullptr);
  DT_WRITEC(&c, &out, &zero, nullptr);
  DT_WRITERXML(&r, &out);
  DT_WRITEIXML(&i, &out);
  // A row left open takes a field of the caller's before it is written out.
  DT_ISCAWRITE(&i, &out, &one, &leaveOpen);
  A_SETCSVI(&out, &extra, &appendAndClose);
  closeChannel(out);

  const std::vector<std::string> lines = linesOf(subsurf::testing::TempDir::read(path));
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], realRecord(r));
  EXPECT_EQ(lines[1], "1 'ncores' 4 1 1");
  EXPECT_EQ(lines[3], "IV, D%V, D%SET, D%VU%ISER, D%VU%IUN, D%VU%CU");
  EXPECT_EQ(lines[5], "IV, D%V, D%SET");
  EXPECT_EQ(lines[6], "1, 4, 1");
  EXPECT_EQ(lines[7], "ncores,1,4,1,1,99");

  DT_RSCA r2;
  ASSERT_TRUE(readRealRow(throughRecord(lines[0]), r2).ok());
  expectSame(r2, r);
  DT_CSCA c2 = makeText("", "");
  ASSERT_TRUE(readTextRow(throughRecord(lines[2]), c2).ok());
  expectSame(c2, c);
}
