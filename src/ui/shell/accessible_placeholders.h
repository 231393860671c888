#pragma once

namespace sonvel::ui {

/// Gives objects of QML files an empty accessible interface while no screen reader or other assistive program
/// reads this one. Qt keeps the names of all classes whose interface it has looked for until the program
/// ends, and those of QML files are new ones in each engine: about a kilobyte more each time that the panel
/// opens. Call after the application object exists; more than one call is the same as one. Main thread.
void installAccessiblePlaceholders();

} // namespace sonvel::ui
