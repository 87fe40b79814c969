#include "simulator/Gzip.h"

#include <zlib.h>

#include <cstdlib>

namespace tidewell {

namespace {

/// One gzip stream. Fails only for want of memory, and then stops the program.
class Deflater {
public:
    Deflater()
    {
        constexpr int gzipWindow = 15 + 16;
        constexpr int memoryLevel = 8;
        if (deflateInit2(&stream_, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, memoryLevel, Z_DEFAULT_STRATEGY) !=
            Z_OK)
            std::abort();
    }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    ~Deflater() { deflateEnd(&stream_); }

    void add(std::string_view text, bool last)
    {
        std::string input{text};
        stream_.next_in = reinterpret_cast<Bytef*>(input.data());
        stream_.avail_in = static_cast<uInt>(input.size());
        do {
            std::array<char, 16384> buffer;
            stream_.next_out = reinterpret_cast<Bytef*>(buffer.data());
            stream_.avail_out = buffer.size();
            deflate(&stream_, last ? Z_FINISH : Z_NO_FLUSH);
            output_.append(buffer.data(), buffer.size() - stream_.avail_out);
        } while (stream_.avail_out == 0);
    }

    [[nodiscard]] std::string output() && { return std::move(output_); }

private:
    z_stream stream_{};
    std::string output_{};
};

}  // namespace

std::string gzip(std::string_view text)
{
    Deflater deflater;
    deflater.add(text, true);
    return std::move(deflater).output();
}

std::string gzipOfBlanks(std::size_t size)
{
    Deflater deflater;
    const std::string blanks(64 * 1024, ' ');
    for (; size > blanks.size(); size -= blanks.size())
        deflater.add(blanks, false);
    deflater.add(std::string_view{blanks}.substr(0, size), true);
    return std::move(deflater).output();
}

}  // namespace tidewell
