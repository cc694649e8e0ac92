// What the header made of Brindle.idl asks for under the name of automation.idl.
#pragma once

#include <oaidl.h>
