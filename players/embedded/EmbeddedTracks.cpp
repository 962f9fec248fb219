#include "players/embedded/EmbeddedTracks.h"

#include <chrono>

namespace Corvella {

namespace {

using namespace std::chrono_literals;

constexpr auto kLanternsLyrics = R"(We folded the evening along the old crease
and set it on water, a candle apiece.
The bridge held its breath and the willows leaned in;
one lantern stayed near us, too shy to begin.

  Slow river, slow river, take all that I made,
  the ones that burn brightly, the ones that will fade.
  I'll count them till morning, I'll count them by name.
  The river says nothing. I love it the same.

My grandmother's kettle, a ship out of Spain,
the seat next to mine on the very last train:
I wrote them on paper as light as a moth
and the current unrolled them like patterns on cloth.

  Slow river, slow river, take all that I made,
  the ones that burn brightly, the ones that will fade.
  I'll count them till morning. I'm nearly at ten.
  The river says nothing. I'll start them again.)";

constexpr auto kBalconyLyrics = R"(قمرٌ على الشرفةِ يسقي الياسمين
ويعدُّ على مهلٍ خُطى العائدين
قلتُ: هل تبقى قليلاً عندنا؟
قال: ليلي قصيرٌ، وضوئي أمين

يا قمرُ، يا جارَنا، لا تستعجلِ
ما زال في الإبريقِ شايٌ، فانزلِ)";

constexpr auto kLibraryLyrics = R"(雨の日だけ ひらく図書館
傘のかたちの しおりを挟む
貸出カードに にじむ名前は
たぶん わたしの 知らないわたし

返却日は にわか雨の朝
水たまりに 月を返した
司書の猫が ひとつ あくびして
「延滞ですね」と 空を見上げる)";

constexpr auto kLighthouseLyrics = R"(One lamp, with a lens like the eye of a whale,
two hundred and seven stone steps, and a stair,
a rail on the left that is mostly a rail,
a draught on the right that is mostly sea air.
One logbook, in which I have written today:
"The weather came in and declined to explain."
One pencil. One sharpener. One jar of grey clay.
One hat for the wind and one hat for the rain.

  Turn, light, turn, for whoever may pass:
  a mile for the tanker, a mile for the smack.
  I'm one man, one stove and one acre of glass,
  and the dark is the thing that I keep off its track.

One table, three legs, and a brick for the fourth,
one chair for myself and one chair for the gull;
the gull has the window that looks to the north,
and complains when the view or the herring is dull.
One clock that is right if you add half a day,
one compass that points to the kettle instead,
one map of an island a few miles away
where somebody's lamp is put out before bed.

One tin with the buttons of seventeen coats,
one coat with no buttons, of very good wool,
one drawer full of string, and of messages, notes:
"Buy string", and then, lower, "The string drawer is full".
One gramophone, sulking. One record, of bells.
One mousetrap, unsprung, by a treaty with mice.
One shelf with a choir of convalescent shells.
One cake from my sister, which once had been nice.

  Turn, light, turn, for whoever may pass:
  for the trawler of Thursday, the yacht that is lost.
  I polish the evening, I polish the glass,
  I polish the window the winter embossed.

One letter, begun in a hopeful July:
"Dear Anna, the puffins are back on the ledge."
One comma. A blot, where I thought of reply.
One line about fog, and its terrible edge.
One letter from Anna, kept flat in a book
on the care of brass fittings, at page forty-two.
I know what it says and I don't need to look.
I look every Sunday. There's nothing to do.

One storm, in November, that took off the door
and returned it in March, with a barnacle crest.
One seal, who is possibly three seals or four,
and sings like a hinge, though he does do his best.
One rowing boat, blue, on a rope, on a ring,
that leans on the tide as a dog on a lead.
One bucket of rainwater, good till the spring.
One lantern for walking. One lantern to read.

  Turn, light, turn, for whoever may pass:
  the one who is early, the one who is late.
  There's soup on the stove and the sea's in the glass,
  and nobody ever was sent from the gate.

One night when the lens and the stars were the same,
and I lay on the gallery, counting them twice,
and a ship on the skyline spelled out, with its flame,
G, O, O, D, and a space, and then N, and then ICE.
I think it was "night", but the swell got it wrong.
I answered by turning, it's all that I do.
One ship, going nowhere that I would belong.
One beam, going out to it. Into it. Through.

One keeper: see over. In working repair,
some rust at the hinges, some salt in the seams,
sole owner of sixty-one acres of air
and of one narrow bed, with the usual dreams.
Item: the morning, brought up on the tide.
Item: the gull, who would like to be fed.
Item: one knock. There is someone outside.
Item: "The puffins are back", Anna said.

  Turn, light, turn, for whoever may pass,
  we'll mind you by turns, it is easy with two:
  one hand for the kettle and one for the glass.
  One logbook, in which I have written: "Came through.")";

constexpr auto kApologyLyrics = R"(I'm sorry. It was three o'clock.
It was the polka. You did knock.
I took it for the second beat.
(Encore, with both my left feet.))";

EmbeddedTrack lanterns() {
  return {.track = {.name = "Lanterns on a Slow River",
                    .artist = "Marlo Venn",
                    .album = "Small Hours, Large Windows",
                    .lyrics = kLanternsLyrics,
                    .rating = 80,
                    .finish = 163s},
          .cover = "lanterns"};
}

EmbeddedTrack harbour() {
  // The title is spelled with combining marks, as some players hand titles on.
  return {.track = {.name = "Pr\u030Ci\u0301stav v mlze",
                    .artist = "Sextet bez šestého",
                    .album = "Noční přívoz",
                    .lyrics = "Instrumental",
                    .rating = 60,
                    .finish = 112'500ms},
          .cover = "harbour"};
}

EmbeddedTrack balcony() {
  return {.track = {.name = "قمر على الشرفة",
                    .artist = "فرقة النافذة الزرقاء",
                    .album = "شاي بعد منتصف الليل",
                    .lyrics = kBalconyLyrics,
                    .rating = 100,
                    .finish = 197s},
          .cover = "balcony"};
}

EmbeddedTrack library() {
  return {.track = {.name = "雨の図書館",
                    .artist = "三月の階段",
                    .album = "紙の傘、水の本",
                    .lyrics = kLibraryLyrics,
                    .rating = 80,
                    .finish = 141'250ms},
          .cover = "library"};
}

EmbeddedTrack lighthouse() {
  return {.track = {.name = "Inventory of a Lighthouse",
                    .artist = "Odalys Thornquay",
                    .album = "Ballads for Very Small Rooms",
                    .lyrics = kLighthouseLyrics,
                    .rating = 100,
                    .finish = 240s},
          .cover = "lighthouse"};
}

EmbeddedTrack balloon() {
  return {.track = {.name = "🎈 Postcard from Over the Hill 👩‍🚀",
                    .artist = "Pom & the Thermals",
                    .album = "Wish You Were Up Here 🏳️‍🌈",
                    .lyrics = "",
                    .rating = 40,
                    .finish = 21s},
          .cover = "balloon"};
}

EmbeddedTrack apology() {
  return {.track = {.name = "Notes Towards an Apology to the Upstairs Neighbour, Who Was Perfectly "
                            "Right About the Accordion, the Hour, and (With Hindsight) the Second "
                            "Accordion (Extended Landing Mix)",
                    .artist = "The Bellows of Upper Lower Street Municipal Accordion Orchestra",
                    .album = "Live from the Stairwell, Volumes One Through Eleven, Abridged",
                    .lyrics = kApologyLyrics,
                    .rating = 20,
                    .finish = 88s},
          .cover = "apology"};
}

EmbeddedTrack elevator() {
  return {.track = {.name = "Elevator, Going Sideways",
                    .artist = "Nobody in Particular",
                    .album = "Untitled, Uncovered",
                    .lyrics = "",
                    .rating = 0,
                    .finish = 34s},
          .cover = ""};
}

}  // namespace

std::vector<EmbeddedTrack> embeddedTracks() {
  return {lanterns(),   harbour(), balcony(), library(),
          lighthouse(), balloon(), apology(), elevator()};
}

}  // namespace Corvella
