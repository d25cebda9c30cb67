#pragma once

class EntryPage;

/// What the user did on a page.
struct PageAnswer {
    enum Kind {
        Left,  ///< the left soft key
        Right, ///< the right one
        Row,   ///< chose a row
        Gone   ///< the program ends
    };

    Kind kind = Gone;
    int row = -1;
};

/// Shows a page, if it is not up, and waits in the event loop for what its user does next. The page
/// stays up.
PageAnswer answerOn(EntryPage& page);
