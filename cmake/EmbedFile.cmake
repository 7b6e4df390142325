# Run as a script, writes OUTPUT: the text of INPUT as the array SYMBOL of namespace zeltrack.
file(READ ${INPUT} content)
string(FIND "${content}" ")embedded\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "${INPUT} holds the mark that ends its embedded text")
endif()
file(WRITE ${OUTPUT} "namespace zeltrack {
extern const char ${SYMBOL}[];
const char ${SYMBOL}[] = R\"embedded(${content})embedded\";
}  // namespace zeltrack
")
