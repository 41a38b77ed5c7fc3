// The containers beside those of the standard library, one operation after the other.

#include <algorithm>
#include <map>
#include <set>

#include "Kcore/Bytes.h"
#include "Kcore/Directory.h"
#include "Kcore/Exception.h"
#include "OptionsInput.h"
#include "Steps.h"
#include "Tyk/String.h"

using namespace DhcpTest;
using namespace DhcpTest::Fuzz;
using Kcore::String;

namespace {

constexpr std::size_t mostSteps = 400;

/// A key whose hash has few values, so that many keys collide.
struct Key {
    U8 value;
    friend bool operator==(const Key&, const Key&) = default;
    friend auto operator<=>(const Key&, const Key&) = default;
    std::size_t hash() const { return value % 5u; }
};

struct Maps {
    Kcore::FlatMap<Key, String> map;
    std::map<Key, std::string> model;
    Kcore::FlatSet<Key> set;
    std::set<Key> setModel;

    void step(Steps& steps) {
        const U8 how = steps.u8();
        const Key key{steps.u8()};
        const std::string text(key.value % 50u, static_cast<char>(how));
        switch (how % 8) {
            case 0:
            case 1:
                expect(map.insert(key, text) == model.emplace(key, text).second);
                break;
            case 2:
                map.insertOrAssign(key, text), model[key] = text;
                break;
            case 3: {
                const auto gone = map.erase(key);
                const auto known = model.find(key);
                expect(gone.has_value() == (known != model.end()) && (!gone || *gone == known->second));
                model.erase(key);
                break;
            }
            case 4:
                expect(set.insert(key) == setModel.insert(key).second);
                break;
            case 5:
                expect(set.erase(key) == (setModel.erase(key) != 0));
                break;
            case 6: {
                const auto copy = map;
                if (key.value < 3) map.clear(), model.clear();
                if (key.value == 100) map = copy, model = {copy.begin(), copy.end()};
                const auto moved = std::move(set);
                set = moved;
                if (key.value < 3) set.clear(), setModel.clear();
                break;
            }
            default: {
                Kcore::FlatSet<Key> other;
                std::for_each(setModel.rbegin(), setModel.rend(), [&other](Key each) { other.insert(each); });
                expect(other == set && other.hash() == set.hash());
            }
        }
        const String* const found = map.find(key);
        const auto known = model.find(key);
        expect((found != nullptr) == (known != model.end()) && (found == nullptr || *found == known->second));
        expect(map.size() == model.size() && set.size() == setModel.size() &&
               set.contains(key) == setModel.contains(key));
    }
    void check() const {
        for (const auto& [key, value] : map) expect(model.at(key) == value);
        for (const Key& key : set) expect(setModel.contains(key));
        auto other = map;
        expect(other == map);
        if (other.empty()) return;
        other.erase(other.begin()->first);
        expect(!(other == map));
    }
};

struct ByteString {
    Kcore::Bytes bytes;
    Octets model;

    void step(Steps& steps) {
        const U8 how = steps.u8();
        if (model.size() > 3000) how % 2 == 0 ? (bytes.clear(), model.clear()) : (bytes.resize(5), model.resize(5));
        if (how % 8 < 2) {
            const Octets more = steps.octets();
            bytes.append(more);
            model = model + more;
        } else if (how % 8 == 2) {
            const std::size_t n = steps.u16() % 700;
            bytes.resize(n);
            model.resize(n);
        } else if (how % 8 == 3) {  // a part of itself
            const std::size_t from = steps.below(model.size()), n = steps.below(model.size() - from);
            const Octets part(model.begin() + static_cast<std::ptrdiff_t>(from),
                              model.begin() + static_cast<std::ptrdiff_t>(from + n));
            bytes.append(bytes.span().subspan(from, n));
            model = model + part;
        } else if (how % 8 == 4) {
            Kcore::Bytes other;
            other.resize(steps.u16() % 700);
            if (how < 128) other = bytes;
            if (how >= 128) model.assign(other.size(), 0);
            bytes = other;
        } else if (how % 8 == 5) {
            const Kcore::Bytes copy(bytes);
            expect(copy == bytes);
        } else if (!model.empty()) {
            const std::size_t at = steps.u16() % model.size();
            bytes[at] = how;
            model[at] = how;
        } else {
            bytes.push_back(how);
            model.push_back(how);
        }
        expect(Octets(bytes.begin(), bytes.end()) == model && bytes.empty() == model.empty());
    }
};

struct Strings {
    String text;
    std::string model;

    void step(Steps& steps) {
        const U8 how = steps.u8();
        if (model.size() > 3000) text = {}, model = {};
        const std::size_t from = steps.u8(), count = steps.u8();
        if (how % 4 == 0) {
            const std::string more = steps.text();
            text = text + String(more);
            model += more;
        } else if (how % 4 == 1) {
            expect(text.substrOrEmpty(from, count) == (from <= model.size() ? model.substr(from, count) : ""));
            try {
                text = text.substr(from, count);
                model = model.substr(from, count);
            } catch (const Kcore::RangeException&) {
                expect(from > model.size());
            }
        } else if (how % 4 == 2) {
            const String copy = text, moved = std::exchange(text, copy);
            expect(copy == moved && copy.hash() == moved.hash() && (copy <=> moved) == 0);
        } else {
            expect(text.find(static_cast<char>(from)) == model.find(static_cast<char>(from)));
            try {
                const Tyk::BoundedString<40> bounded = text;
                expect(model.size() <= 40 && bounded == model && bounded.hash() == text.hash());
            } catch (const Kcore::RangeException&) {
                expect(model.size() > 40);
            }
        }
        expect(text == model && text.size() == model.size());
    }
};

/// A directory whose observers are added, removed, and throw.
struct Watched {
    Kcore::Directory<U8, U8> directory;
    std::map<U8, U8> model;
    std::vector<std::unique_ptr<Kcore::Observers<const U8&>::Observation>> observations;
    bool throws = false;

    void step(Steps& steps) {
        const U8 how = steps.u8(), key = steps.u8() % 32, value = steps.u8();
        throws = how % 8 == 7;
        if (how % 8 == 6 && observations.size() < 5) {
            observations.emplace_back(new auto(directory.observers().observe([this](const U8&) {
                if (throws) throw Kcore::RangeException("no");
            })));
            return;
        }
        try {
            how < 180 ? directory.entryIs(key, value) : directory.entryDel(key);
            how < 180 ? void(model[key] = value) : void(model.erase(key));
        } catch (const Kcore::RangeException&) {
            expect(throws && !observations.empty());
            if (how % 16 == 15) observations.pop_back();
        }
        const U8* const found = directory.find(key);
        expect((found != nullptr) == model.contains(key) && (found == nullptr || *found == model[key]));
        expect(directory.entries().size() == model.size());
    }
};

}  // namespace

/// The first byte selects the container; the rest are operations.
extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    Steps steps(data, size);
    const U8 which = steps.u8();
    Maps maps;
    ByteString bytes;
    Strings strings;
    Watched watched;
    for (std::size_t n = 0; n < mostSteps && steps.more(); ++n) switch (which % 4) {
            case 0:
                maps.step(steps);
                break;
            case 1:
                bytes.step(steps);
                break;
            case 2:
                strings.step(steps);
                break;
            default:
                watched.step(steps);
        }
    maps.check();
    return 0;
}
