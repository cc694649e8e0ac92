# The manual as plain text for Windows: <manual>.txt of <manual>.
execute_process(COMMAND ${mandoc} -T ascii ${manual}
    OUTPUT_VARIABLE text
    COMMAND_ERROR_IS_FATAL ANY)
# Terminals print bold and underlined letters twice.
string(ASCII 8 backspace)
string(REGEX REPLACE ".${backspace}" "" text "${text}")
string(REPLACE "\n" "\r\n" text "${text}")
file(WRITE ${manual}.txt "${text}")
