# The programs in a page of Markdown: each block that begins with ```c or ```cpp goes to a file of its own, PREFIX1.c,
# PREFIX2.cpp and so on. Usage: awk -v prefix=PREFIX -f blocks.awk PAGE
/^```/ {
    if (file != "") {
        close(file)
        file = ""
    } else if ($0 == "```c" || $0 == "```cpp") {
        count++
        file = prefix count "." substr($0, 4)
        printf "" > file
    }
    next
}
file != "" { print > file }
