#pragma once

/// Takes over what Qt itself has to say, from before its application object on: warnings go to the log as
/// details, and what ends the program (a platform that cannot be started) becomes one line on standard error
/// and exit status 1.
void takeOverQtMessages();
