# A large partwise MusicXML score for the benchmarks: P parts of M measures,
# each measure four quarter notes with a chord symbol on every beat (roots
# and kinds cycling), the first measure of each part with its attributes.
#   awk -v P=8 -v M=1000 -f bench/large_score.awk > large.musicxml
# Plain POSIX awk, so that mawk (the default awk of Debian) runs it too.
BEGIN {
  parts = P ? P : 8; measures = M ? M : 1000;
  split("C D E F G A B", steps, " "); split("major minor dominant major-seventh", kinds, " ");
  print "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
  print "<!DOCTYPE score-partwise PUBLIC \"-//Recordare//DTD MusicXML 4.0 Partwise//EN\" \"http://www.musicxml.org/dtds/partwise.dtd\">";
  print "<score-partwise version=\"4.0\">";
  print "  <work>\n    <work-title>Large</work-title>\n  </work>";
  print "  <part-list>";
  for (p = 1; p <= parts; p++) printf "    <score-part id=\"P%d\">\n      <part-name>Part %d</part-name>\n    </score-part>\n", p, p;
  print "  </part-list>";
  for (p = 1; p <= parts; p++) {
    printf "  <part id=\"P%d\">\n", p;
    for (m = 1; m <= measures; m++) {
      printf "    <measure number=\"%d\">\n", m;
      if (m == 1) print "      <attributes>\n        <divisions>1</divisions>\n        <key>\n          <fifths>0</fifths>\n        </key>\n        <time>\n          <beats>4</beats>\n          <beat-type>4</beat-type>\n        </time>\n        <clef>\n          <sign>G</sign>\n          <line>2</line>\n        </clef>\n      </attributes>";
      for (b = 0; b < 4; b++) {
        printf "      <harmony>\n        <root>\n          <root-step>%s</root-step>\n        </root>\n        <kind>%s</kind>\n      </harmony>\n", steps[(m + b + p) % 7 + 1], kinds[(m + b) % 4 + 1];
        print "      <note>\n        <pitch>\n          <step>C</step>\n          <octave>5</octave>\n        </pitch>\n        <duration>1</duration>\n        <voice>1</voice>\n        <type>quarter</type>\n      </note>";
      }
      print "    </measure>";
    }
    print "  </part>";
  }
  print "</score-partwise>";
}
