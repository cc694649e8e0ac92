# A page of the manual as plain text for Windows: <text> from <manual>.
execute_process(COMMAND ${mandoc} -T ascii ${manual}
    OUTPUT_VARIABLE shown
    COMMAND_ERROR_IS_FATAL ANY)
# Terminals print bold and underlined letters twice.
string(ASCII 8 backspace)
string(REGEX REPLACE ".${backspace}" "" shown "${shown}")
string(REPLACE "\n" "\r\n" shown "${shown}")
file(WRITE ${text} "${shown}")
