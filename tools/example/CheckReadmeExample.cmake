# Fails unless the first C++ block of README equals EXAMPLE.
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(FIND "${readme}" "```cpp\n${example}```\n" place)
if(place EQUAL -1)
    message(FATAL_ERROR "README.md does not show tools/example/minimal_host.cpp as it is: "
        "copy the file into its block \"```cpp\"")
endif()
