// Reading alignments and distance matrices from text, and what is counted of an alignment.
#include <gtest/gtest.h>

#include <regex>

#include "tests/data.h"
#include "wide/data/alignment_statistics.h"
#include "wide/data/labels.h"
#include "wide/formats/numbers.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {
namespace {

using std::string;
using Strings = std::vector<string>;

Alignment FromText(const string& text) {
  return ReadAlignment(Source("f", text));
}

// The code of each cell.
Strings Codes(const Alignment& alignment) {
  Strings rows;
  for (const std::vector<StateSet>& cells : alignment.cells) {
    rows.emplace_back();
    for (const StateSet cell : cells) rows.back() += "-ACMGRSVTWYHKDBN"[cell];
  }
  return rows;
}

TEST(Formats, GiveTheSameSequences) {
  const Strings labels{"Homo sap 1", "b", "seq3.1", "d_4"};
  const Strings codes{"ACGTACGTACNA", "RYMKSWHBVDNN", "--GTACGTAC-A", "TTTTACGTACTT"};
  const Strings texts{
      "#nexus\nbegin data; dimensions ntax=4 nchar=12; format datatype=dna gap=- missing=?; "
      "matrix\n"
      "'Homo sap 1' ACGTACGTACNA\nb RYMKSWHBVDNX\n'seq3.1' ??{G}TACGTAC{C-}A\n'd_4' TTTTACGTACTT; "
      "end;",
      "4 12\nHomo sap 1ACGTAC GTACNA\nb         rymkswHBVDnx\nseq3.1    ??GT ACGTAC-A\n"
      "d_4       TUTTACGTACTT\n",
      "4 12\nHomo sap 1ACGTAC\nb         RYMKSW\nseq3.1    ??GTAC\nd_4       TuTTAC\n \t\n"
      "GTACNA\nHBVDNX\nGTAC-A\nGTACTT\n",
      "4 12 I\rHomo sap 1\rACGTACGTAC\rNA\rb\rRYMKSWHBVDNX\rseq3.1    ??GTACGTAC-A\rd_4       "
      "TUTTACGTACTT"};
  for (const string& text : texts) {
    const Alignment alignment = FromText(text);
    EXPECT_EQ(alignment.labels, labels) << text;
    EXPECT_EQ(Codes(alignment), codes) << text;
    EXPECT_FALSE(alignment.rna);
  }
  const Alignment clustal = FromText(
      "CLUSTAL O(1.2.4) multiple alignment\n\n\nx|1 ACGU-\t5\ny   ACGUU 5\n    ****\n\nx|1 A 6\n"
      "y   G\n");
  EXPECT_EQ(clustal.labels, (Strings{"x|1", "y"}));
  EXPECT_EQ(Codes(clustal), (Strings{"ACGT-A", "ACGTTG"}));
  EXPECT_TRUE(clustal.rna);
  const Alignment rna = FromText(
      "#NEXUS begin data; dimensions ntax=2 nchar=4; format datatype=rna; matrix a ACGU b ACGA; "
      "end;");
  EXPECT_EQ(Codes(rna), (Strings{"ACGT", "ACGA"}));
  EXPECT_TRUE(rna.rna);
}

// Lines that run on from one block of the text to the next, with every kind of line end.
TEST(Formats, ReadLinesAcrossBlocks) {
  for (const string& end : Strings{"\n", "\r\n", "\r"}) {
    string text;
    Strings expected;
    for (std::size_t taxon = 0; taxon < 5; ++taxon) {
      text += ">" + string(300, 'x') + std::to_string(taxon) + end;
      expected.emplace_back();
      for (std::size_t line = 0; line <= 1500; ++line) {
        const std::size_t length = line < 1500 ? 97 + line % 7 : 700001;
        const string cells(length, "ACGT"[(line + taxon) % 4]);
        text += cells + end + (line % 50 ? "" : end);
        expected.back() += cells;
      }
    }
    const Alignment alignment = FromText(text);
    EXPECT_TRUE(Codes(alignment) == expected);
    EXPECT_EQ(alignment.labels[4], string(300, 'x') + "4");
  }
  const string sites = string(300000, 'A') + "C";
  const string nexus =
      "#NEXUS begin data; dimensions ntax=1 nchar=300001; format datatype=dna; matrix a ";
  EXPECT_EQ(Codes(FromText(nexus + sites + "; end;")), Strings{sites});
}

TEST(Formats, KeepLabelsAndMakeThemUtf8) {
  EXPECT_EQ(CleanLabel("d\xC3\xA9j\xC3\xA0|\xE4\xBA\xBA\xF0\x9F\xA7\xAC"),
            "d\xC3\xA9j\xC3\xA0|\xE4\xBA\xBA\xF0\x9F\xA7\xAC");
  EXPECT_EQ(CleanLabel("\xE9t\xE9\x1B"), "\xC3\xA9t\xC3\xA9 ");
  EXPECT_EQ(CleanLabel("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80");
  const Strings labels{"hCoV-19/England/20134/2020|EPI_ISL_1|2020-03-01",
                       "gi|9626243|ref|NC_001416.1|", "caf\xC3\xA9", "ny"};
  string fasta,
      nexus = "#NEXUS begin data; dimensions ntax=4 nchar=1; format datatype=nucleotide; matrix";
  for (const string& label : labels) {
    fasta += ">" + (label == "caf\xC3\xA9" ? "caf\xE9" : label) + "\nA\n";
    nexus += " '" + label + "' A";
  }
  EXPECT_EQ(FromText(fasta).labels, labels);
  EXPECT_EQ(FromText(nexus + "; end;").labels, labels);
}

TEST(Formats, SayWhatIsWrongWithAnAlignment) {
  const string nexus = "#NEXUS\nbegin data; dimensions ntax=2 nchar=4;\nformat datatype=";
  const std::vector<std::pair<string, string>> cases{
      {">a\nMKVL\n>b\nEFVV\n", "f:2:4: the sequences are protein; give those of the nucleotides"},
      {">a\n" + string(40, 'A') + "EEE\n>b\nA\n",
       "f:2:41: 'E' stands for no nucleotide; write a code, ? or -\n"
       "f:2:42: 'E' stands for no nucleotide; write a code, ? or -\n"
       "f:2:43: 'E' stands for no nucleotide; write a code, ? or -"},
      {"2 4\na MKVL\nb EFIL\n", "f:2:6: the sequences are protein; give those of the nucleotides"},
      {nexus + "protein;\nmatrix a MKVL b EFIL;\nend;",
       "f: the matrix holds protein; give the sequences of the nucleotides"},
      {nexus + "dna;\nmatrix\na ACGT\nb A-GT;\nend;",
       "f:6:5: Error reading character 2 for taxon 2 (name \"b\"): Invalid state specified \"-\"; "
       "if it is the gap, add gap=- to the FORMAT command"},
      {nexus + "dna;\nmatrix\na ACGT\nb AEGT;\nend;",
       "f:6:5: Error reading character 2 for taxon 2 (name \"b\"): Invalid state specified \"E\"; "
       "fix it, or, if the sequences are protein, give those of the nucleotides"},
      {nexus + "dna;\nmatrix\na ACGT\nb ACGT;\nend; begin characters; dimensions nchar=1;\n"
               "format datatype=dna; matrix a A b C; end;",
       "f: more than one matrix of nucleotides; keep one"},
      {"# STOCKHOLM 1.0\na ACGT\n", "f:1:1: this is Stockholm's format; convert it to FASTA"},
      {"LOCUS       X\n",
       "f:1:1: this is GenBank's format; align its sequences and give them as FASTA"},
      {">a\r\nA\r\n>\r\nA\r\n", "f:3:1: no label; write one"},
      {"clustal\n\na A\nb J\n", "f:4:3: 'J' stands for no nucleotide; write a code, ? or -"},
      {"CLUSTAL\n\na A\nb C\n\na A\nc C\n",
       "f:7:1: label c where the first block has b; fix the order of the lines"},
      {"CLUSTAL\n\na A\nb C\n\na A\nb C\nc C\n",
       "f:8:1: label c where the first block has none; fix the order of the lines"},
      {"4 0\na\n", "f:1:1: no numbers of taxa and sites; begin a PHYLIP file with them"},
      {">a\n>b\n", "f: no sites; give aligned sequences"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(test::FaultOf([&text = text] { FromText(text); }), expected);
  }
}

// Distances 12, 13, 14, 23, ... of taxa 1 to 4 in every shape.
TEST(Formats, ReadMatricesOfEveryShape) {
  const Strings texts{" 4\nHomo 0 12 13 14\nb 12 0 23 24\nc 13 23 0 34\nd 14 24 34 0\n",
                      "4\nHomo\t0 12\n13 14\nb\n12 0 23 24\nc 13 23 0 34\nd 14 24\n34 0\n",
                      "4\nHomo\nb 12\nc 13\t23\nd 14 24 34\n",
                      "4\nHomo 0\nb 12 0\nc 13 23 0\nd 14 24 34 0\n",
                      "4\nHomo 0 12 13 14\nb 0 23 24\nc 0 34\nd 0\n",
                      "4\nHomo 12 13 14\nb 23 24\nc 34\nd\n"};
  const auto check = [](const string& text, const Strings& labels) {
    const LabelledMatrix matrix = ReadMatrix(Source("f", text));
    EXPECT_EQ(matrix.labels, labels) << text;
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        EXPECT_EQ(matrix.distances(i, j), i == j ? 0 : 10 * std::min(i, j) + std::max(i, j) + 11);
      }
    }
  };
  for (const string& text : texts) {
    check(text, {"Homo", "b", "c", "d"});
    if (text.find("b\n12") != text.npos) continue;
    // Strict labels, with blanks and without.
    string strict = std::regex_replace(text, std::regex("Homo"), "Homo sap 5");
    strict = std::regex_replace(strict, std::regex("\nc"), "\nc         ");
    strict = std::regex_replace(strict, std::regex("\nd ?"), "\nlonglabels");
    check(strict, {"Homo sap 5", "b", "c", "longlabels"});
  }
}

// Larger than what is mirrored at once.
TEST(Formats, ReadLargeMatricesOfEveryShapeBackTheSame) {
  const DistanceMatrix random = test::Matrix(70, test::RandomDistances(1));
  const string square = FormatSquareMatrix(Strings(70, "x"), random);
  string lower = "70", upper = "70";
  for (int i = 0; i < 70; ++i) {
    for (string* triangle : {&lower, &upper}) *triangle += "\nx";
    for (int j = 0; j < 70; ++j) {
      if (j != i) (j < i ? lower : upper) += " " + Shortest(random(i, j));
    }
  }
  for (const string& text : {square, lower, upper}) {
    const DistanceMatrix back = ReadMatrix(Source("f", text)).distances;
    for (const auto& [i, j] : test::Pairs(70)) {
      ASSERT_TRUE(back(i, j) == random(i, j) && back(j, i) == random(i, j));
    }
  }
}

TEST(Formats, TakeMissingDistancesAndRefuseWrongOnes) {
  const LabelledMatrix matrix = ReadMatrix(Source("f", "4\na\nb NaN\nc -1 NA\nd - -1.000 1e-1\n"));
  EXPECT_EQ(matrix.distances.Undefined().size(), 5u);
  EXPECT_EQ(matrix.distances(3, 2), 0.1);
  // Halves that were rounded each by itself.
  EXPECT_EQ(ReadMatrix(Source("f", "2\na -1 +1.00001\nb 1 0\n")).distances(0, 1), 1.000005);
  const std::vector<std::pair<string, string>> cases{
      {"4\na 0 1 1 1\nb 1.001 0 -3 1\nc 1 nan .5 1e999\nd 1 -1\n 1 0",
       "f:3:11: distance -3; write a number that is 0 or more, or NA for none\n"
       "f:3:3: distance 1.001 of b to a, but 1 the other way; make them the same\n"
       "f:4:9: distance 0.5 of c to itself; write 0\n"
       "f:4:12: distance inf; write a number of 1e300 at most, or NA for none\n"
       "f:5:5: distance nan of d to b, but 1 the other way; make them the same"},
      {"3\na 0 1 2\nb 1 0 2 5\nc 2 2 0\n",
       "f:3:9: \"5\" after the 3 distances of b; begin the next row on a line of its own"},
      {"3\na 0 1 2\nb 1 0 2\n",
       "f:3: the file ends after 2 of 3 taxa; fix the first line or add the rest"},
      {"2\na 0 1\nb 1 0\nc",
       "f:4:1: text after the last distance; the first line says 2 taxa, fix it or the rows"},
      {">a\nAC\n", "f:1:1: no number of taxa; a distance matrix begins with it"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(test::FaultOf([&text = text] { ReadMatrix(Source("f", text)); }), expected);
  }
}

TEST(Formats, WriteMatricesThatReadBackTheSame) {
  DistanceMatrix distances(2);
  distances.Set(0, 1, 0.1 + 0.2);
  const string text = FormatSquareMatrix({"a b", "longer_than_ten"}, distances);
  EXPECT_EQ(text, "2\na_b        0 0.30000000000000004\nlonger_than_ten 0.30000000000000004 0\n");
  EXPECT_EQ(ReadMatrix(Source("f", text)).distances(1, 0), 0.1 + 0.2);
  EXPECT_EQ(Listed(Strings(22, "x"), ""), string(20, 'x') + "and 2 more");
}

// Sites: the same; one that differs; informative; informative in two of three nucleotides; an
// ambiguity or a gap makes no difference, nor does it repeat one.
TEST(AlignmentStatistics, AreThoseCountedByHand) {
  const AlignmentStatistics found = StatisticsOf(
      MakeAlignment("", {"a", "b", "c", "d", "e", "f"},
                    {"-AAARA-", "ACAAA-N", "AACCAAT", "AACCARC", "AACGAAT", "AACGAAT"}));
  EXPECT_EQ(found.variable, 4u);
  EXPECT_EQ(found.informative, 2u);
  ASSERT_EQ(found.sequences.size(), 6u);
  const std::size_t gaps[] = {2, 1, 0, 0, 0, 0}, ambiguous[] = {1, 1, 0, 1, 0, 0};
  for (std::size_t taxon = 0; taxon < 6; ++taxon) {
    EXPECT_EQ(found.sequences[taxon].gaps, gaps[taxon]);
    EXPECT_EQ(found.sequences[taxon].ambiguous, ambiguous[taxon]);
  }
  EXPECT_EQ(found.identical, (std::vector<std::vector<std::size_t>>{{4, 5}}));
}

// What is not definite comes first, and labels tell those apart that are the same.
TEST(AlignmentOrder, DoesNotDependOnTheFile) {
  Alignment alignment = MakeAlignment("", {"z", "y", "b", "x"}, {"AC", "AN", "AC", "A-"});
  alignment.rna = true;
  alignment.Reorder(CanonicalOrder(alignment));
  EXPECT_EQ(alignment.labels, (Strings{"x", "y", "b", "z"}));
  EXPECT_EQ(alignment.cells[1][1], kAnyState);
  EXPECT_TRUE(alignment.rna);
}

}  // namespace
}  // namespace zorvek::wide
