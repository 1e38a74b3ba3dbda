#pragma once

class QApplication;

// SIGTERM and SIGINT end the event loop instead of the process, so that the program's objects
// are destroyed and take their child processes and threads with them.
void quitOnTermination(QApplication &app);
