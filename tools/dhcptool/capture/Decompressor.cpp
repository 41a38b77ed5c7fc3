#include "capture/Decompressor.h"

#include <zlib.h>
#include <zstd.h>

#include <array>
#include <new>
#include <stdexcept>
#include <string>

namespace DhcpTool {

namespace {

/// What all formats share: compressed input that is read as it is needed.
class BufferedDecompressor : public Decompressor {
public:
    explicit BufferedDecompressor(RawFile& file) : file_(file) {}

    /// Reads until there is output: a piece of input may have none, such as a header.
    std::size_t read(U8* to, std::size_t size) final {
        for (;;) {
            if (at_ == end_) {
                at_ = 0;
                end_ = file_.read(input_.data(), input_.size());
                inputEnded_ = end_ == 0;
            }
            const std::size_t written = decompress(to, size);
            if (written != 0) return written;
            if (!inputEnded_) continue;
            if (insideMember_) throw std::runtime_error("the compressed data are cut");
            return 0;
        }
    }

protected:
    const U8* input() const { return input_.data() + at_; }
    std::size_t inputBytes() const { return end_ - at_; }
    void inputTaken(std::size_t bytes) { at_ += bytes; }
    /// Whether the input has ended within a compressed member, of which a file may have several.
    void insideMemberIs(bool inside) { insideMember_ = inside; }

private:
    /// Decompresses input() to `to` and takes it. Returns the number of bytes written, which may be 0.
    virtual std::size_t decompress(U8* to, std::size_t size) = 0;

    RawFile& file_;
    std::array<U8, 64 * 1024> input_;
    std::size_t at_ = 0, end_ = 0;
    bool inputEnded_ = false, insideMember_ = true;
};

[[noreturn]] void raiseDamage(const char* what) {
    throw std::runtime_error(std::string("the compressed data are damaged: ") + what);
}

class Gzip final : public BufferedDecompressor {
public:
    explicit Gzip(RawFile& file) : BufferedDecompressor(file) {
        constexpr int largestWindow = 15, gzipFormat = 16;
        if (inflateInit2(&state_, largestWindow + gzipFormat) != Z_OK) throw std::bad_alloc();
    }
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;
    ~Gzip() override { inflateEnd(&state_); }

private:
    std::size_t decompress(U8* to, std::size_t size) override {
        if (memberEnded_ && inputBytes() != 0) {
            inflateReset(&state_);
            memberEnded_ = false;
            insideMemberIs(true);
        }
        if (memberEnded_) return 0;
        state_.next_in = const_cast<U8*>(input());  // zlib only reads them
        state_.avail_in = static_cast<unsigned>(inputBytes());
        state_.next_out = to;
        state_.avail_out = static_cast<unsigned>(size);
        const int result = inflate(&state_, Z_NO_FLUSH);
        inputTaken(inputBytes() - state_.avail_in);
        if (result == Z_STREAM_END) {
            memberEnded_ = true;
            insideMemberIs(false);
        }
        const std::size_t written = size - state_.avail_out;
        // Z_BUF_ERROR: it needs more input. What was written before an error is whole; the next call fails again.
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR && written == 0)
            raiseDamage(state_.msg != nullptr ? state_.msg : "unknown reason");
        return written;
    }

    z_stream state_{};
    bool memberEnded_ = false;
};

class Zstd final : public BufferedDecompressor {
public:
    explicit Zstd(RawFile& file) : BufferedDecompressor(file), state_(ZSTD_createDCtx(), ZSTD_freeDCtx) {
        if (!state_) throw std::bad_alloc();
    }

private:
    std::size_t decompress(U8* to, std::size_t size) override {
        ZSTD_inBuffer from{input(), inputBytes(), 0};
        ZSTD_outBuffer target{to, size, 0};
        const std::size_t wanted = ZSTD_decompressStream(state_.get(), &target, &from);
        if (ZSTD_isError(wanted) != 0) raiseDamage(ZSTD_getErrorName(wanted));
        if (wanted == 0 || from.pos != 0) insideMemberIs(wanted != 0);  // without input the result may be a mere hint
        inputTaken(from.pos);
        return target.pos;
    }

    const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> state_;
};

}  // namespace

std::unique_ptr<Decompressor> decompressorOf(RawFile& file) {
    constexpr Kcore::U32 gzipMagic = 0x1f8b, zstdMagic = 0x28b52ffd;
    const Kcore::U32 magic = file.magic();
    if (magic >> 16 == gzipMagic) return std::make_unique<Gzip>(file);
    if (magic == zstdMagic) return std::make_unique<Zstd>(file);
    return nullptr;
}

}  // namespace DhcpTool
