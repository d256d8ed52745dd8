#pragma once

/// What the process tells its caller when it ends.
enum class ExitCode
{
    Ok = 0,            ///< every unit answered at least once
    OutputFailed = 1,  ///< standard output could not be written
    Configuration = 2, ///< an option, a file or the plugin is unusable; nothing was started
    UnitNotHeard = 3,  ///< a unit never answered
    PictureMissing = 4 ///< a screenshot could not be taken
};
