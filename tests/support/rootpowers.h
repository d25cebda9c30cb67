#pragma once

/// Lets file permissions bind this process as they bind a user: as root it gives up the powers that
/// override them and starts itself anew, which is the only way to be rid of them. Returns when
/// there is nothing (more) to give up. Call it first in main().
void giveUpRootPowers(char** argv);
