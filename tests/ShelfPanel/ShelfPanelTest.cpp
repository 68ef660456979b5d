// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/UniqueFd.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/RunTask.h"

#include <gmock/gmock.h>

#include <sstream>

#include <poll.h>
#include <sys/socket.h>

namespace vantrell::testing {

namespace {

/// One of the programs of this folder, which answers a line for each that it gets.
class Talker {
public:
    explicit Talker(const std::string &program) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
            throw std::runtime_error("no socket");
        m_socket = UniqueFd(ends[0]);
        const UniqueFd theirs(ends[1]);
        m_process = std::make_unique<ChildProcess>(
            std::vector{program, std::to_string(theirs.get())},
            ChildProcess::Environment{{"QT_QPA_PLATFORM", "xcb"}, {"QT_SCALE_FACTOR", "1"}}, theirs.get());
    }

    std::string ask(const std::string &question) const {
        const std::string line = question + "\n";
        if (::write(m_socket.get(), line.data(), line.size()) != ssize_t(line.size()))
            return "(gone)";
        std::string answer;
        while (!answer.ends_with('\n')) {
            pollfd waiting{m_socket.get(), POLLIN, 0};
            char bytes[4096];
            const ssize_t count =
                ::poll(&waiting, 1, 30000) == 1 ? ::read(m_socket.get(), bytes, sizeof bytes) : 0;
            if (count <= 0)
                return "(gone)";
            answer.append(bytes, std::size_t(count));
        }
        answer.pop_back();
        return answer;
    }
    /// Asks until the answer is that.
    ::testing::AssertionResult says(const std::string &question, const std::string &expected) const {
        std::string answer;
        if (eventually([&] { return (answer = ask(question)) == expected; }))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
               << question << ": \"" << answer << "\", not \"" << expected << '"';
    }

private:
    UniqueFd m_socket;
    std::unique_ptr<ChildProcess> m_process;
};

class ShelfPanelTest : public ::testing::Test {
protected:
    struct Place {
        int x = 0;
        int y = 0;
    };

    ShelfPanelTest() { EXPECT_TRUE(neighbour.says("clicks", "0")); }

    /// The middle of a control or card, once it is on the screen.
    Place whereIs(const std::string &name) const {
        std::string answer;
        EXPECT_TRUE(eventually([&] { return !(answer = shelf.ask("where " + name)).empty(); })) << name;
        Place place;
        std::istringstream(answer) >> place.x >> place.y;
        return place;
    }
    void pointAt(Place place) const {
        session.run({"xdotool", "mousemove", std::to_string(place.x), std::to_string(place.y)});
    }
    void click(Place place, const std::string &button = "1") const {
        pointAt(place);
        session.run({"xdotool", "click", button});
    }
    void press(const std::string &keys) const { session.run({"xdotool", "key", "--delay", "30", keys}); }
    void drag(Place from, int right, int down) const {
        pointAt(from);
        session.run({"xdotool", "mousedown", "1"});
        constexpr int steps = 12;
        for (int i = 1; i <= steps; ++i) {
            pointAt({from.x + right * i / steps, from.y + down * i / steps});
            session.run({"sleep", "0.03"});
        }
        session.run({"xdotool", "mouseup", "1"});
    }

    void startCompositor() {
        compositor = std::make_unique<ChildProcess>(
            std::vector<std::string>{"picom", "--backend", "xrender", "--config", "/dev/null"});
        EXPECT_TRUE(shelf.says("blended", "1"));
    }

    X11Session session{{.width = 1000, .height = 700, .windowManager = true}};
    Talker neighbour{NEIGHBOUR};
    Talker shelf{SHELF_HOST};
    std::unique_ptr<ChildProcess> compositor;
};

TEST_F(ShelfPanelTest, cardsDoWhatTheirButtonsSay) {
    shelf.ask("add Movie");
    shelf.ask("done");
    click(whereIs("Open"));
    EXPECT_TRUE(shelf.says("happened", "open Movie"));
    shelf.ask("fail No way");
    click(whereIs("Retry"));
    EXPECT_TRUE(shelf.says("happened", "retry Movie"));
    shelf.ask("needs-project");
    click(whereIs("Choose project"));
    EXPECT_TRUE(shelf.says("menu", "Team && talks"));
    press("Down");
    press("Return");
    EXPECT_TRUE(shelf.says("happened", "project p1 for Movie"));
    pointAt(whereIs("Movie"));
    click(whereIs("Dismiss"));
    EXPECT_TRUE(shelf.says("cards", ""));
}

TEST_F(ShelfPanelTest, keysGoToTheShelfOnlyForAsLongAsItIsAskedTo) {
    for (const char *card : {"add A", "add B", "add C"})
        shelf.ask(card);
    shelf.ask("fail No way");
    whereIs("C");
    press("x");
    shelf.ask("keyboard");
    // The newest card's action, the one above it, and what Delete does there.
    EXPECT_TRUE(eventually([&] {
        press("Return");
        return shelf.ask("happened").starts_with("retry C");
    }));
    // The action goes with the focus that the click gave it, and what is beside would dismiss the card.
    click(whereIs("Retry"));
    EXPECT_TRUE(eventually([&] { return shelf.ask("happened").starts_with("retry C"); }));
    shelf.ask("upload 0");
    press("space");
    press("Up");
    press("Delete");
    EXPECT_TRUE(shelf.says("cards", "A, C"));
    press("Escape");
    EXPECT_TRUE(eventually([&] {
        press("y");
        return neighbour.ask("text").find('y') != std::string::npos;
    }));
    EXPECT_EQ(neighbour.ask("text").substr(0, 2), "xy");
    EXPECT_EQ(shelf.ask("cards"), "A, C");
}

TEST_F(ShelfPanelTest, aPointerOverTheShelfKeepsItsCardsAndMeetsNothingBesideThem) {
    // Without one the window is cut to its cards anyway.
    startCompositor();
    shelf.ask("add Older");
    shelf.ask("add Newer");
    shelf.ask("done");
    const Place older = whereIs("Older");
    const Place newer = whereIs("Newer");
    pointAt(newer);
    EXPECT_TRUE(shelf.says("attended", "1"));
    shelf.ask("advance 60000");
    EXPECT_EQ(shelf.ask("cards"), "Older, Newer");

    click({newer.x, (older.y + newer.y) / 2 + 2});
    click({newer.x - 200, newer.y});
    click({newer.x, older.y - 80});
    EXPECT_TRUE(neighbour.says("clicks", "3"));
    click(older);
    EXPECT_TRUE(eventually([&] {
        pointAt({10, 600});
        shelf.ask("advance 3000");
        return shelf.ask("cards") == "Older";
    }));
    EXPECT_EQ(neighbour.ask("clicks"), "3");
}

TEST_F(ShelfPanelTest, cardsAreDraggedOutAsFilesAndAwayToTheRight) {
    shelf.ask("add Film");
    drag(whereIs("Film"), -500, -100);
    EXPECT_TRUE(neighbour.says("dropped", "file:///tmp/a%20film%20%FF.mov"));
    EXPECT_EQ(shelf.ask("cards"), "Film");
    drag(whereIs("Film"), 40, 0);
    EXPECT_EQ(shelf.ask("cards"), "Film");
    drag(whereIs("Film"), 120, 8);
    EXPECT_TRUE(shelf.says("cards", ""));
}

TEST_F(ShelfPanelTest, whatIsTypedElsewhereArrivesWholeWhateverTheShelfShows) {
    startCompositor();
    std::string text;
    for (int i = 0; i < 12; ++i)
        text += "The quick brown fox " + std::to_string(i) + ". ";
    pointAt({900, 600});
    ChildProcess typing({"xdotool", "type", "--delay", "15", text});
    const std::string odd = std::string(500, 'W') + "\xe2\x80\xae<b>\\n\xe2\x81\xa6";
    for (int i = 0; typing.isRunning(); ++i) {
        shelf.ask("add-damaged " + (i % 3 == 0 ? odd : "Card " + std::to_string(i)));
        shelf.ask(i % 2 == 0 ? "upload 0." + std::to_string(i % 10) : "fail " + odd);
        if (i % 14 == 13)
            shelf.ask("clear");
        session.run({"sleep", "0.02"});
    }
    EXPECT_TRUE(neighbour.says("text", text));
    shelf.ask("clear");
    EXPECT_EQ(shelf.ask("cards"), "");
}

TEST_F(ShelfPanelTest, theWheelBringsOlderCards) {
    for (int i = 1; i <= 12; ++i)
        shelf.ask("add Card " + std::to_string(i));
    const Place newest = whereIs("Card 12");
    EXPECT_EQ(shelf.ask("where Card 1"), "");
    EXPECT_TRUE(eventually([&] {
        click(newest, "4");
        return !shelf.ask("where Card 1").empty();
    }));
    EXPECT_EQ(shelf.ask("where Card 12"), "");
}

} // namespace

} // namespace vantrell::testing
