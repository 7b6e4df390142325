cmake_policy(VERSION 3.21)
# Run as a script, joins the parts of a page: PARTS are its markup and its styles, SCRIPTS its modules, each after what
# it imports; WORKER_SCRIPTS the same for the page's other thread. Together the modules are one script, without their
# imports, exports, comments and indentation. Writes the page as the array SYMBOL of namespace zeltrack, page_template
# if none is named, to OUTPUT, and the script alone to SCRIPT_OUTPUT, to be checked.

# The base64 digits of a text's SHA-256, as a content security policy names what may run.
function(policy_hash text result)
  set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  string(SHA256 hex "${text}")
  set(hex ${hex}00)  # 66 digits, of which three are two of base64
  set(hash "")
  foreach(at RANGE 0 63 3)
    string(SUBSTRING ${hex} ${at} 3 group)
    math(EXPR high "0x${group} >> 6")
    math(EXPR low "0x${group} & 63")
    foreach(digit ${high} ${low})
      string(SUBSTRING ${digits} ${digit} 1 letter)
      string(APPEND hash ${letter})
    endforeach()
  endforeach()
  string(SUBSTRING ${hash} 0 43 hash)
  set(${result} "'sha256-${hash}='" PARENT_SCOPE)
endfunction()

function(read_joined files result)
  set(joined "")
  foreach(file ${files})
    file(READ ${file} content)
    string(REGEX REPLACE "(^|\n)import [^;]*;" "" content "${content}")
    string(REGEX REPLACE "\nexport " "\n" content "${content}")
    string(REGEX REPLACE "\n *//[^\n]*" "" content "${content}")
    string(REGEX REPLACE "\n +" "\n" content "${content}")
    string(REGEX REPLACE "\n\n+" "\n" content "${content}")
    string(APPEND joined "${content}")
  endforeach()
  set(${result} "${joined}" PARENT_SCOPE)
endfunction()

if(NOT SYMBOL)
  set(SYMBOL page_template)
endif()
read_joined("${SCRIPTS}" script)
set(script "\n'use strict';\n${script}")
file(WRITE ${SCRIPT_OUTPUT} "${script}")
read_joined("${WORKER_SCRIPTS}" worker)
set(worker "'use strict';\n${worker}")

list(GET PARTS 0 markup)
list(SUBLIST PARTS 1 -1 style_files)
file(READ ${markup} page)
set(style "")
foreach(file ${style_files})
  file(READ ${file} content)
  string(APPEND style "${content}")
endforeach()
policy_hash("${script}" SCRIPT_HASH)
policy_hash("${style}" STYLE_HASH)
string(REPLACE "@SCRIPT_HASH@" "${SCRIPT_HASH}" page "${page}")
string(REPLACE "@STYLE_HASH@" "${STYLE_HASH}" page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@WORKER@" "${worker}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")

string(FIND "${page}" ")embedded\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "The page holds the mark that ends its embedded text")
endif()
file(WRITE ${OUTPUT} "namespace zeltrack {
extern const char ${SYMBOL}[];
const char ${SYMBOL}[] = R\"embedded(${page})embedded\";
}  // namespace zeltrack
")
