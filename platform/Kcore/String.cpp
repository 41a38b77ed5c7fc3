#include "Kcore/String.h"

#include <algorithm>
#include <limits>
#include <new>
#include <ostream>

#include "Kcore/Exception.h"

namespace Kcore {

char String::at(std::size_t i) const {
    if (i >= size()) throwException("Kcore::String::at beyond size() not allowed");
    return data()[i];
}

String String::substr(std::size_t pos, std::size_t count) const {
    if (pos > size()) throwException("Kcore::String::substr beyond size() not allowed");
    return view().substr(pos, count);
}

String String::substrOrEmpty(std::size_t pos, std::size_t count) const {
    return view().substr(std::min(pos, size()), count);
}

void String::assignShared(std::string_view head, std::string_view tail) {
    const std::size_t size = head.size() + tail.size();
    if (size > std::numeric_limits<U32>::max()) throwException("Kcore::String::size > 4294967295 not allowed");
    auto* block = new (::operator new(sizeof(Shared) + size)) Shared;
    block->size = static_cast<U32>(size);
    std::copy(tail.begin(), tail.end(), std::copy(head.begin(), head.end(), block->bytes()));
    std::memcpy(inline_, &block, sizeof block);
    size_ = sharedMark;
}

void String::letGo() {
    Shared* block = shared();
    if (block->uses.decrement() != 0) return;
    block->~Shared();
    ::operator delete(block);
}

String String::joined(std::string_view a, std::string_view b) {
    String out;
    if (a.size() + b.size() > inlineCapacity) {
        out.assignShared(a, b);
        return out;
    }
    std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), out.inline_));
    out.size_ = static_cast<U8>(a.size() + b.size());
    return out;
}

std::ostream& operator<<(std::ostream& out, const String& s) { return out << s.view(); }

}  // namespace Kcore
