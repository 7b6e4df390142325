# Run as a script, writes OUTPUT: the bytes of INPUT as a gzip file, or none without INPUT, as the array SYMBOL of
# namespace zeltrack and their number as SYMBOL_size.
cmake_policy(VERSION 3.21)
set(bytes "")
set(size 0)
if(INPUT)
  file(ARCHIVE_CREATE OUTPUT ${OUTPUT}.gz PATHS ${INPUT} FORMAT raw COMPRESSION GZip COMPRESSION_LEVEL 9 MTIME 0)
  file(READ ${OUTPUT}.gz bytes HEX)
  string(LENGTH "${bytes}" size)
  math(EXPR size "${size} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
endif()
file(WRITE ${OUTPUT} "#include <cstddef>
namespace zeltrack {
extern const unsigned char ${SYMBOL}[];
extern const std::size_t ${SYMBOL}_size;
const unsigned char ${SYMBOL}[] = {${bytes}0};
const std::size_t ${SYMBOL}_size = ${size};
}  // namespace zeltrack
")
