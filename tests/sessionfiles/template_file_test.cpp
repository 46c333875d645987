// Rectangle templates: the file's records, saving and reading named
// templates and the template in use, the description alone, the list, and
// every refusal with its message.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "session_test_support.h"
#include "subsurf/core.h"

namespace subsurf {
namespace {

using namespace testing;
namespace fs = std::filesystem;

class TemplateFileTest : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }

  // Five bands over a 1600 x 1200 photograph, the second with a fifth corner
  // and a changed colour.
  static RectangleTemplate sample() {
    CoreSession session;
    CoreImage* image = session.newImage();
    fillImage(session, *image, 1, "/p/TRAY_1.jpg", 5);
    RectangleTemplate t;
    CoreSession::templateFromImage(*image, t, 1600, 1200);
    t.description = "Five rows, 1.5 m trays";
    t.length = 1.5f;
    return t;
  }

  static void expectSameTemplate(const RectangleTemplate& a, const RectangleTemplate& b) {
    EXPECT_EQ(a.description, b.description);
    EXPECT_TRUE(sameBits(a.length, b.length));
    EXPECT_EQ(a.referenceWidth, b.referenceWidth);
    EXPECT_EQ(a.referenceHeight, b.referenceHeight);
    ASSERT_EQ(a.rectangles.size(), b.rectangles.size());
    for (std::size_t k = 0; k < a.rectangles.size(); ++k)
      expectSame(a.rectangles[k], b.rectangles[k], "rectangle " + std::to_string(k + 1));
  }

  ScratchUserLib userlib;
};

TEST_F(TemplateFileTest, TemplateFileRecords) {
  RectangleTemplate t;
  t.description = "One row, \"long\" core";
  t.length = 4.5f;
  t.referenceWidth = 800;
  t.referenceHeight = 200;
  Polygon p;
  setUpPolygonProperties(p);
  CoreRectangle r;
  r.polygon = p;
  CoreSession::setVertexCount(r, 4);
  r.polygon.px = {0, 800, 800, 0};
  r.polygon.py = {0, 0, 200, 200};
  t.rectangles.push_back(r.polygon);
  const std::string path = userlib.dir.file("one.rctml");
  ASSERT_TRUE(saveTemplateFile(t, path));
  EXPECT_EQ(TempDir::read(path),
            "version,2.11a\n"
            "description,\"One row, \"\"long\"\" core\"\n"
            "polies,1,800,200\n"
            "length,4.5\n"
            "poly num,1\n"
            "integer scalars,6\n"
            "status,1,0,-1,0\n"
            "components,1,1,-1,0\n"
            "type,1,1,-1,0\n"
            "area_sign,1,1,-1,0\n"
            "colour,1,2,-1,0\n"
            "thickness,1,1,-1,0\n"
            "verts,4,0,0,\"\",\"\",800,0,\"\",\"\",800,200,\"\",\"\",0,200,\"\",\"\"\n");
}

TEST_F(TemplateFileTest, NamedTemplateRoundTripAlsoBecomesTheTemplateInUse) {
  const RectangleTemplate t = sample();
  ASSERT_TRUE(saveNamedTemplate(t, "five rows"));
  EXPECT_TRUE(fs::exists(userlib.dir.file("rtmplts/five rows.rctml")));
  EXPECT_EQ(templateInUseFile(), userlib.dir.file("rtmplts.rctml"));
  EXPECT_EQ(TempDir::read(templateInUseFile()), TempDir::read(namedTemplateFile("five rows")));

  RectangleTemplate read;
  ASSERT_TRUE(readNamedTemplate(" five rows ", read)) << lastMessage();
  EXPECT_EQ(read.name, "five rows");
  expectSameTemplate(t, read);
  ASSERT_EQ(read.rectangles.size(), 5u);
  EXPECT_EQ(read.rectangles[1].n, 5);
  EXPECT_EQ(read.rectangles[1].props[kPolyColour].V, 5);
}

TEST_F(TemplateFileTest, TemplateWithoutPhotoSizeOrLengthReadsAsUnscaled) {
  const std::string path = userlib.dir.write("bare.rctml",
                                             "version,2.11\n"
                                             "description,\n"
                                             "polies,1\n"
                                             "length,\n"
                                             "poly num,1\n"
                                             "integer scalars,0\n"
                                             "verts,2,5,6,,,7,8,,\n");
  RectangleTemplate t;
  t.referenceWidth = 99;
  ASSERT_TRUE(readTemplateFile(path, t)) << lastMessage();
  EXPECT_EQ(t.referenceWidth, 0);
  EXPECT_EQ(t.referenceHeight, 0);
  EXPECT_TRUE(isNull(t.length));
  EXPECT_EQ(t.description, "");
  ASSERT_EQ(t.rectangles.size(), 1u);
  EXPECT_EQ(t.rectangles[0].px, (std::vector<int>{5, 7}));
  EXPECT_EQ(t.rectangles[0].props[kPolyThickness].V, 1);  // defaults where the file has none
}

TEST_F(TemplateFileTest, DescriptionIsCutToFortyCharacters) {
  RectangleTemplate t = sample();
  t.description = std::string(38, 'x') + "yyyy";
  ASSERT_TRUE(saveNamedTemplate(t, "long"));
  std::string description;
  ASSERT_TRUE(readTemplateDescription(namedTemplateFile("long"), description));
  EXPECT_EQ(description, std::string(38, 'x') + "yy");
}

TEST_F(TemplateFileTest, DescriptionIsReadFromAFileWhoseRectanglesAreDamaged) {
  const std::string path = userlib.dir.write("half.rctml", "version,2.11a\ndescription,Six rows\npolies,6\n");
  std::string description;
  ASSERT_TRUE(readTemplateDescription(path, description));
  EXPECT_EQ(description, "Six rows");

  std::string name(260, ' ');
  setFixed(name.data(), name.size(), path);
  char field[40];
  int status = -1;
  COR_TEMPLATEDESC(name.c_str(), field, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(std::string(field, 40), "Six rows" + std::string(32, ' '));
}

TEST_F(TemplateFileTest, MissingTemplateFileCannotBeOpened) {
  std::string description = "old";
  EXPECT_FALSE(readTemplateDescription(userlib.dir.file("none.rctml"), description));
  EXPECT_EQ(lastMessage(), "Could not open template file!");
  EXPECT_EQ(description, "old");

  RectangleTemplate t = sample();
  EXPECT_FALSE(readNamedTemplate("none", t));
  EXPECT_EQ(lastMessage(), "Could not open template file!");
  EXPECT_EQ(t.rectangles.size(), 5u);

  std::string name(260, ' ');
  char field[40];
  std::fill(std::begin(field), std::end(field), 'z');
  int status = -1;
  COR_TEMPLATEDESC(name.c_str(), field, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(std::string(field, 40), std::string(40, ' '));
  EXPECT_EQ(lastMessage(), "Could not open template file!");
}

TEST_F(TemplateFileTest, TemplateMustBeGivenAUsableName) {
  const RectangleTemplate t = sample();
  for (const char* name : {"", "   "}) {
    host::clearRecorded();
    EXPECT_FALSE(saveNamedTemplate(t, name));
    EXPECT_EQ(lastMessage(), "Rectangle template must be given a name!");
  }
  EXPECT_FALSE(saveNamedTemplate(t, "a/b"));
  EXPECT_EQ(lastMessage(), "\"a/b\" cannot be a template name: it must be a plain file name");
  EXPECT_FALSE(saveNamedTemplate(t, ".."));
  EXPECT_FALSE(saveNamedTemplate(t, std::string(41, 'n')));
  EXPECT_EQ(lastMessage(), "A template name may be at most 40 characters long");
  EXPECT_TRUE(saveNamedTemplate(t, std::string(40, 'n')));
  EXPECT_FALSE(fs::exists(userlib.dir.file("rtmplts/a")));
  EXPECT_EQ(listTemplates(false).size(), 1u);

  // The exported routine takes the template's own name when given none.
  RectangleTemplate& inUse = coreSession().rectangleTemplate();
  const RectangleTemplate before = inUse;
  inUse = t;
  inUse.name.clear();
  const std::string blank(40, ' ');
  int status = -1;
  COR_SAVERECTANGLES(blank.c_str(), &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(lastMessage(), "Rectangle template must be given a name!");
  inUse.name = "own name";
  COR_SAVERECTANGLES(blank.c_str(), &status);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(fs::exists(namedTemplateFile("own name")));
  EXPECT_EQ(toolUserSettings().templateName, "own name");
  inUse = before;
}

TEST_F(TemplateFileTest, EmptyLibrarySaysNoTemplatesDefined) {
  EXPECT_TRUE(listTemplates().empty());
  EXPECT_EQ(lastMessage(), "No templates defined");
  host::clearRecorded();
  int count = -1;
  COR_TEMPLATENUM(&count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(lastMessage(), "No templates defined");
  // The template in use alone is not a library.
  ASSERT_TRUE(saveTemplateFile(sample(), templateInUseFile()));
  EXPECT_TRUE(listTemplates(false).empty());
}

TEST_F(TemplateFileTest, LibraryListsTemplatesByNameWithDescriptions) {
  RectangleTemplate t = sample();
  t.description = "second";
  ASSERT_TRUE(saveNamedTemplate(t, "b"));
  t.description = "first";
  ASSERT_TRUE(saveNamedTemplate(t, "a"));
  userlib.dir.write("rtmplts/broken.rctml", "not a template\n");
  userlib.dir.write("rtmplts/notes.txt", "version,2.11a\n");
  host::clearRecorded();
  const auto list = listTemplates();
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0].name, "a");
  EXPECT_EQ(list[0].description, "first");
  EXPECT_EQ(list[1].name, "b");
  EXPECT_EQ(list[1].description, "second");
  EXPECT_EQ(list[2].name, "broken");
  EXPECT_EQ(list[2].description, "");
  EXPECT_TRUE(host::recordedMessages().empty());  // listing does not complain

  char name[40], description[40];
  int place = 2, status = -1;
  COR_TEMPLATEGET(&place, name, description, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fixedText(name), "b");
  EXPECT_EQ(fixedText(description), "second");
  place = 4;
  COR_TEMPLATEGET(&place, name, description, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(fixedText(name), "");
}

TEST_F(TemplateFileTest, TemplateInUseIsReadIntoTheSessionAndKeptWhenTheFileIsDamaged) {
  const RectangleTemplate t = sample();
  ASSERT_TRUE(saveNamedTemplate(t, "five"));
  CoreSession session;
  EXPECT_EQ(readTemplateIntoSession(session, templateInUseFile()), 0);
  expectSameTemplate(t, session.rectangleTemplate());

  // Damaged: the verts of the last rectangle are cut off.
  auto lines = fileLines(templateInUseFile());
  lines.pop_back();
  const std::string damaged = userlib.dir.write("damaged.rctml", joinLines(lines, lines.size()));
  EXPECT_EQ(readTemplateIntoSession(session, damaged), 1);
  EXPECT_EQ(lastMessage(), damaged + ", line " + std::to_string(lines.size() + 1) +
                               ": the file ends where \"verts\" was expected");
  expectSameTemplate(t, session.rectangleTemplate());

  // The exported routine reads the template in use when given a blank name.
  RectangleTemplate& inUse = coreSession().rectangleTemplate();
  const RectangleTemplate before = inUse;
  inUse = RectangleTemplate{};
  const std::string blank(260, ' ');
  int status = -1;
  COR_READRECTANGLES(blank.c_str(), &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(inUse.rectangles.size(), 5u);
  std::string missing(40, ' ');
  setFixed(missing.data(), missing.size(), "missing");
  COR_TEMPLATEUSE(missing.c_str(), &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(inUse.rectangles.size(), 5u);
  inUse = before;
}

TEST_F(TemplateFileTest, StartUpReadsTheTemplateInUseOrFallsBackToTheDefaults) {
  const RectangleTemplate t = sample();
  ASSERT_TRUE(saveNamedTemplate(t, "five"));
  int status = -1;
  COR_INIT(&status);
  ASSERT_EQ(status, 0);
  expectSameTemplate(t, coreSession().rectangleTemplate());

  userlib.dir.write("rtmplts.rctml", "version,2.11a\ndescription,x\npolies,many\n");
  COR_INIT(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(lastMessage(), templateInUseFile() + ", line 3: \"polies\" needs a whole number in field 2, found \"many\"");
  EXPECT_TRUE(coreSession().rectangleTemplate().rectangles.empty());
  COR_CLOSE(&status);
}

TEST_F(TemplateFileTest, TemplateCutAfterAnyLineIsRefused) {
  ASSERT_TRUE(saveNamedTemplate(sample(), "five"));
  const auto lines = fileLines(namedTemplateFile("five"));
  // The description alone is enough for the list; everything after it is
  // needed for the template itself.
  for (std::size_t keep = 2; keep < lines.size(); ++keep) {
    SCOPED_TRACE(keep);
    const std::string path = userlib.dir.write("cut.rctml", joinLines(lines, keep));
    RectangleTemplate t;
    EXPECT_FALSE(readTemplateFile(path, t));
    EXPECT_EQ(lastMessage().rfind(path + ", line " + std::to_string(keep + 1) + ": the file ends where", 0), 0u)
        << lastMessage();
    EXPECT_TRUE(t.rectangles.empty());
  }
  const std::string extra = userlib.dir.write("extra.rctml", joinLines(lines, lines.size()) + "poly num,6\n");
  RectangleTemplate t;
  EXPECT_FALSE(readTemplateFile(extra, t));
  EXPECT_EQ(lastMessage(), extra + ", line " + std::to_string(lines.size() + 1) +
                               ": \"poly num\" found after the last rectangle; the file should end there");
}

TEST_F(TemplateFileTest, BadPhotoSizeOrLengthIsRefused) {
  const std::string head = "version,2.11a\ndescription,x\n";
  RectangleTemplate t;
  const std::string a = userlib.dir.write("a.rctml", head + "polies,0,-5,10\nlength,1\n");
  EXPECT_FALSE(readTemplateFile(a, t));
  EXPECT_EQ(lastMessage(), a + ", line 3: the photograph size in \"polies\" must not be negative");
  const std::string b = userlib.dir.write("b.rctml", head + "polies,0\nlength,long\n");
  EXPECT_FALSE(readTemplateFile(b, t));
  EXPECT_EQ(lastMessage(), b + ", line 4: \"length\" needs a number, found \"long\"");
  const std::string c = userlib.dir.write("c.rctml", head + "polies,0\nlength,2\n");
  EXPECT_TRUE(readTemplateFile(c, t));
  EXPECT_TRUE(t.rectangles.empty());
  EXPECT_EQ(t.length, 2.0f);
}

}  // namespace
}  // namespace subsurf
