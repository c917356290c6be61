// NEXUS files that lead the library astray, through both programs: each names the cause with its place,
// and neither ends by a signal or takes the memory that the file announces.

#include "tests/files.h"
#include "tests/reference_input.h"

namespace zorvek::test {
namespace {

using reference::NexusFile;
using std::string;

struct BadFile {
  string text;
  int line, column;  // 0 where the library knows no place
  string cause;
};

const string kGood = NexusFile(4, 10, "DATATYPE=DNA GAP=- MISSING=?",
                               "a ACGTACGTTA\nb ACGTACGTTC\nc ACGAACGTTG\nd ACCTACGATA\n");

string With(const string& old, const string& replacement) {
  return string(kGood).replace(kGood.find(old), old.size(), replacement);
}

const std::vector<BadFile> kBadFiles{
    {With("NTAX=4", "NTAX=5"), 10, 2,
     "Unexpected ; after only 4 taxa were read (expecting characters for 5 taxa)"},
    {With(";\nEND", "; DIMENSIONS NTAX=4 NCHAR=30; END"), 10, 35, "matrix does not fit DIMENSIONS"},
    {With(";\nEND", "; DIMENSIONS NTAX=3 NCHAR=10; END"), 10, 35, "matrix does not fit DIMENSIONS"},
    {With(";\nEND", "; FORMAT DATATYPE=PROTEIN; END"), 10, 10, "FORMAT command after the matrix"},
    {With("NCHAR=10", "NCHAR=100000000"), 6, 1,
     "DIMENSIONS announces 4 taxa x 100000000 characters, more than the file can hold"},
    {With("NTAX=4 NCHAR=10", "NTAX=16000000 NCHAR=1"), 0, 0,
     "NTAX is 16000000, more than the file can hold"},
#ifndef __SANITIZE_ADDRESS__  // whose allocator ends the process where another one throws
    {"#NEXUS\nBEGIN TAXA; DIMENSIONS NTAX=2000000000; END;\n", 0, 0,
     "NTAX is 2000000000, more than the file can hold"},
#endif
    {With("DIM", "ELIMINATE 1-20; DIM"), 0, 0,
     "internal assertion failed: eliminated.size() <= nChar"},
    {With("DIM", "ELIMINATE ALL; DIM"), 0, 0,
     "internal assertion failed: eliminated.size() <= nChar"},
    {With("CGAACGTTG", "CGAA[]CG(A[])TG"), 8, 19,
     "Error reading character 8 for taxon 3 (name \"c\"): Invalid state specified \"[\""},
    {"#NEXUS\n'open", 2, 6,
     "Unexpected end-of-file (end-of-file inside ' quoted token that started on line 2, column 2)"},
};

using BadFilesTest = FolderTest;

TEST_F(BadFilesTest, EndWithTheirCauseInBothPrograms) {
#ifdef __SANITIZE_ADDRESS__
  const string limit;  // the sanitizer takes more
#else
  const string limit = "ulimit -v 300000; ";
#endif
  for (const BadFile& bad : kBadFiles) {
    SCOPED_TRACE(bad.text);
    Write("bad", bad.text);
    const string line = std::to_string(bad.line);
    const string column = std::to_string(bad.column);
    const string zorvek = "Error: bad: " + bad.cause +
                          (bad.line > 0 ? " (line " + line + ", column " + column + ")" : "") +
                          "; at least 4 taxa are needed.\n";
    const Ended run = Shell(limit + ZORVEK_PROGRAM " bad");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.substr(std::min(run.out.find("Error"), run.out.size())), zorvek);

    const string wide = "zorvek-wide: bad" + (bad.line > 0 ? ":" + line + ":" + column : "") + ": ";
    const Ended other = Shell(limit + ZORVEK_WIDE_PROGRAM " bad");
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(other.out, "");
    EXPECT_EQ(other.err.substr(0, (wide + bad.cause).size()), wide + bad.cause);
  }
}

}  // namespace
}  // namespace zorvek::test
