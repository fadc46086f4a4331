// The operations that read, each with what it may bring and nothing else.

#include "Reads.h"

#include "Turn.h"

namespace soak {

namespace {

struct Choice {
    std::string name;
    unsigned number;
};

Choice oneOf(const Family& family, Dice& dice) {
    const unsigned which = dice.below(family.count);
    return {numbered(family.stem, which), family.firstStamp + which};
}

void expectStamps(Turn& turn, const std::vector<double>& values, std::size_t count,
                  unsigned number) {
    turn.judge.expect(
        values.size() == count, turn.where,
        "it brought " + std::to_string(values.size()) + " values, not " + std::to_string(count));
    for (const double value : values) turn.judge.stamp(turn.where, value, number, turn.startUs);
}

/// An axis of the model: the stamp's number, and so on.
void expectAxis(Turn& turn, const std::vector<double>& axis, std::size_t points, unsigned number) {
    bool fits = axis.size() == points;
    for (std::size_t i = 0; fits && i < points; ++i)
        fits = axis[i] == number + static_cast<double>(i);
    turn.judge.expect(fits, turn.where, "an axis is not that of number " + std::to_string(number));
}

bool readOne(Turn& turn, const Family& family, std::size_t count) {
    const Choice choice = oneOf(family, turn.dice);
    turn.where += " " + choice.name;
    std::vector<double> values;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.getParamData(choice.name, values, turn.timeoutMs);
    });
    if (ok) expectStamps(turn, values, count, choice.number);
    return ok;
}

bool readArrays(Turn& turn, const Family& family, std::size_t count, std::size_t xs,
                std::size_t ys) {
    const Choice choice = oneOf(family, turn.dice);
    turn.where += " " + choice.name;
    std::vector<double> values, x, y;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.getParamData(choice.name, values, x, y, turn.timeoutMs);
    });
    if (!ok) return false;
    expectStamps(turn, values, count, choice.number);
    expectAxis(turn, x, xs, choice.number);
    expectAxis(turn, y, ys, choice.number);
    return true;
}

}  // namespace

bool ping(Turn& turn) {
    return turn.make(2 * turn.timeoutMs, [&] { return turn.qor.pingQor(turn.timeoutMs); });
}

bool readMeter(Turn& turn) {
    return readOne(turn, meters, 1);
}
bool readRow(Turn& turn) {
    return readOne(turn, rows, 3);
}
bool readCurve(Turn& turn) {
    return readArrays(turn, curves, 3, 3, 0);
}
bool readMap(Turn& turn) {
    return readArrays(turn, maps, 4, 2, 2);
}

bool readTogether(Turn& turn) {
    std::vector<std::string> names;
    std::vector<unsigned> numbers;
    const unsigned first = turn.dice.below(meters.count);
    const unsigned count = 1 + turn.dice.below(5);
    for (unsigned i = 0; i < count; ++i) {
        const unsigned which = (first + 3 * i) % meters.count;
        names.push_back(numbered(meters.stem, which));
        numbers.push_back(meters.firstStamp + which);
    }
    std::vector<std::vector<double>> values;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.getParamDataAtOnce(names, values, turn.timeoutMs);
    });
    if (!ok) return false;
    turn.judge.expect(values.size() == count, turn.where, "not an array per name");
    for (std::size_t i = 0; i < values.size() && i < count; ++i)
        expectStamps(turn, values[i], 1, numbers[i]);
    return true;
}

bool describe(Turn& turn) {
    const Choice choice = oneOf(turn.dice.below(2) == 0 ? meters : curves, turn.dice);
    turn.where += " " + choice.name;
    wex::ParamDescription description = {};
    const bool ok =
        turn.make(3000, [&] { return turn.qor.getParamDescription(choice.name, description); });
    turn.judge.expect(description.name == choice.name, turn.where, "the name is another one");
    if (!ok) return false;
    const bool fits = description.text1 == choice.name &&
                      description.text2 == "This is " + choice.name &&
                      description.threeArrays == (choice.number >= curves.firstStamp);
    turn.judge.expect(fits, turn.where, "a wrong description: " + description.text2);
    return true;
}

bool readUnknown(Turn& turn) {
    std::vector<double> values;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.getParamData("Nobody", values, turn.timeoutMs);
    });
    turn.judge.expect(!ok && values.empty(), turn.where,
                      "a value of a parameter that is not there");
    return true;
}

bool readOwn(Turn& turn) {
    std::vector<double> values;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.getParamData(numbered(ownStem, turn.worker.number), values, turn.timeoutMs);
    });
    if (!ok) return false;
    const double count = values.empty() ? -1 : values[0] - turn.worker.number * ownUnit;
    // QOR has 0 there when it starts.
    const unsigned life = turn.lifeOfCall();
    const bool mayBeNew = life == 0 || life != turn.worker.confirmedLife;
    const bool fits =
        values.size() == 1 && ((count == 0 && mayBeNew) ||
                               (count >= turn.worker.confirmed && count <= turn.worker.written));
    turn.judge.expect(fits || qorMayMeanEarlier() || !turn.judge.isStrict, turn.where,
                      "of its own it read the count " + std::to_string(count) + ", written were " +
                          std::to_string(turn.worker.confirmed) + " to " +
                          std::to_string(turn.worker.written));
    turn.judge.expect(values.size() == 1 && count >= 0 && count <= turn.worker.written, turn.where,
                      "what it read of its own was never written");
    return true;
}

bool readText(Turn& turn) {
    std::string text;
    const std::string name = numbered(textStem, turn.worker.number);
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.getParamDataAsString(name, text, turn.timeoutMs);
    });
    if (!ok) return false;
    bool fits = text == name + ":0";
    // Unlike a number that is written, a text does not go into the library's cache.
    const bool mayBeCached =
        turn.startUs < turn.worker.textConfirmedUs + turn.judge.oldestCachedUs();
    for (unsigned count = mayBeCached ? 0 : turn.worker.textsConfirmed;
         !fits && count <= turn.worker.textsWritten; ++count)
        fits = text == name + ":" + std::to_string(count);
    const bool isOwn = text.compare(0, name.size() + 1, name + ":") == 0;
    turn.judge.expect(isOwn, turn.where, "another's text: " + text);
    turn.judge.expect(fits || qorMayMeanEarlier() || !turn.judge.isStrict, turn.where,
                      "an old text: " + text);
    return true;
}

}  // namespace soak
