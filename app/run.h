#ifndef KALMO_APP_RUN_H
#define KALMO_APP_RUN_H

namespace kalmo {

/// The whole program between start-up and shut-down. Called once, by main.
void Run(int nArgc, char** ppszArgv);

}  // namespace kalmo

#endif
