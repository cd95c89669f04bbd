#pragma once

#include <QString>
#include <array>

namespace corvane {

// The answers of a client's FBT_AddInfo row for one year, as the screens hold
// them: flags as ticks, counts and amounts as the text of their boxes.
struct AddInfoValues {
    bool chAdd = false;  // "Yes" chosen for "Is there any Change in Address"
    QString ward;
    QString oldWard;
    int section = 0;     // 1-based entry of the section list; 0 when none is chosen
    bool revRet = false; // "Revised Return" chosen
    QString revRecNo;
    QString revRecDt;
    std::array<bool, 6> nob{}; // Manufacturing, Trading, … Others
    bool ac44AA = false;
    bool ac44AB = false;
    QString dt44AB;
    bool ac44ABC = false;
    QString dt44ABC;
    bool peIndia = false;
    bool dtRel1 = false;
    bool dtRel2 = false;
    bool peOut = false;
    bool empBoth = false;
    bool sepBooks = false;
    QString indiaEmp;
    QString totalEmp;
    QString areaCd;
    QString aoTyp;
    QString aoRng;
    QString aoNo;
    bool calc115WJ = false;
    QString amt115WJ;
    bool calc115WK = false;
    QString amt115WK;
    bool calc115WJ5 = false;
    QString amt115WJ5;
    bool intUpto = false; // "Calculate Interest Upto Date"
    QString intDt;        // its date box

    bool operator==(const AddInfoValues&) const = default;
};

// The FBT_MiscInf row the second edition keeps beside it.
struct MiscInfValues {
    static constexpr int kRepFields = 9;      // Var0_0 … Var0_8
    static constexpr int kAuditorFields = 12; // Var1_0 … Var1_11

    bool repAss = false;
    std::array<QString, kRepFields> rep;
    bool opt44AA = false;
    bool opt44AB = false;
    std::array<QString, kAuditorFields> auditor;
    bool nameChanged = false; // Var2_0
    QString oldName;          // Var2_1

    bool operator==(const MiscInfValues&) const = default;
};

enum class AddInfoEdition { First, Second };

// Reads and writes the additional information of the context's client and
// year (Code, TYear, CnnObj of modbase). Failures are logged under the
// screen's name and the procedure's, and the procedure goes on.
class AddInfoRecord {
public:
    AddInfoRecord(AddInfoEdition edition, QString formName);

    AddInfoEdition edition() const { return edition_; }
    const QString& formName() const { return formName_; }

    AddInfoValues values;
    MiscInfValues misc; // second edition only

    // "1" once a normal load found the year's row, "" otherwise; never cleared.
    QString marker;

    // Fills the values from the row of the year (or of the year before); a
    // value the row lacks (null amount) stays as it was. True when a row was found.
    bool READDATA(bool fromPrevious);

    enum class SaveResult { Saved, NoNatureOfBusiness, TooLong };
    // Writes the row: INSERT when the marker is "", else UPDATE; the second
    // edition then replaces its FBT_MiscInf row. The first edition refuses
    // without a nature of business, and both refuse a text its column would
    // cut (tooLong() says which); a refusal writes nothing.
    SaveResult SAVEDATA();

    // Why a text of the edition's boxes does not fit its column, or empty text.
    QString tooLong() const;

    // The ticked natures of business as their 1-based numbers ("24").
    QString nobText() const;

    QString selectStatement(bool fromPrevious) const;
    QString miscSelectStatement(bool fromPrevious) const;
    QString insertStatement() const;
    QString updateStatement() const;
    QString miscDeleteStatement() const;
    QString miscInsertStatement() const;

    // How many characters a box may take so that its column can store it.
    static int boxLength(const QString& table, const QString& column);

private:
    QString keyTail() const;

    AddInfoEdition edition_;
    QString formName_;
};

} // namespace corvane
