#pragma once

#include "chess/types.h"

namespace valku {

// Positions from several games, those of a game in a row from the opening to the endgame. `depth` in plies:
// the more men, the shallower.
struct BenchmarkPosition {
    i32 depth;
    const char* fen;
};

// clang-format off
constexpr BenchmarkPosition benchmarkPositions[] = {
    {11, "rnbqk2r/pp3pp1/3ppn1p/2pP4/2P4B/2P5/P3PPPP/R2QKBNR w KQkq - 0 1"},
    {12, "r4rk1/ppqn1pp1/3p3p/2pPp2n/2P4B/2PB1P1P/P1Q2PP1/1R3RK1 w - - 0 1"},
    {13, "r4r1k/ppq3p1/1n1p3p/2pPp3/2P2p2/2PQ1P1P/P4PPB/1R2R1K1 b - - 0 1"},
    {13, "1r3r2/1pq1n1k1/pR1p2pp/P1pPp3/Q1P2p2/2P2P1P/R4PPB/7K w - - 0 1"},
    {11, "3q3r/rp1n2k1/p2p2p1/P1pPp3/2P3P1/2P2P2/1R4KB/1Q5R b - - 0 1"},
    {11, "r4rk1/pbppqppp/np2pn2/8/1PPP4/P4N2/1BQ1PPPP/R3KB1R b KQ - 0 1"},
    {11, "r1r3k1/2pnqppp/1p2pn2/pP6/Q1pPb3/P3PN2/1B2BPPP/R1R3K1 w - - 0 1"},
    {12, "2r3k1/r1pnq1pp/1p2p3/1P1b1p2/p2Pn3/P2BP3/1B1NQPPP/R1R3K1 b - - 0 1"},
    {11, "5rk1/r1pn2pp/1p2p3/1P3pq1/p2PP3/Pb1B1P2/1B2Q1PP/R1R3K1 w - - 0 1"},
    {11, "2r2r1k/2pn2pp/1p2p3/1P2P3/p2PQ3/P5Pq/3B3P/R4RK1 b - - 0 1"},
    {13, "4q3/2Qn2pk/1p2p2p/1P2P3/pB1P4/P5P1/7P/6K1 w - - 0 1"},
    {14, "8/4k1p1/1p5p/1P2q3/p6P/P5P1/5Q1K/8 w - - 0 1"},
    {11, "rn1qkb1r/pp1n1ppp/2p1p3/3pP3/5Q2/2NP3P/PPP2PP1/R1B1KB1R b KQkq - 0 1"},
    {11, "r3kb1r/pp1n1ppp/1q2p3/2ppPn2/5P2/2NP1Q1P/PPP3P1/R1BK1B1R w kq - 0 1"},
    {12, "r4rk1/ppqn2pp/4pbn1/1Npp4/5PP1/1P1P2QP/P1PBB3/R2K1R2 b - - 0 1"},
    {11, "rq3rk1/3n2pp/p3p3/2pp4/1p3nP1/NPPP2QP/P1K3B1/R4R2 w - - 0 1"},
    {11, "5rk1/r2n2pp/8/p1pp4/Pp1q1nP1/1P1P2QP/R1K5/1N1R3B b - - 0 1"},
    {11, "r1b1r1k1/5p1p/p1p2np1/1p2P3/3P3q/2P5/PPB1Q1PP/RNB3K1 w - - 0 1"},
    {13, "1r2r1k1/5p1p/2p1b1p1/1p1nP1B1/3PB3/2P5/1P3KPP/RN6 b - - 0 1"},
    {15, "r7/5pkp/2p3p1/1p1bP1B1/3P4/N1P5/1P3KPP/8 w - - 0 1"},
    {15, "8/5p2/2p3p1/1p2Pk1p/3P3P/BbP1K1P1/1P6/rN6 w - - 0 1"},
    {10, "rn1qkb1r/1b3ppp/p3pn2/1pp5/P2P4/1B2PN2/1P2QPPP/RNB2RK1 b kq - 0 1"},
    {11, "4kb1r/1b3ppp/q1n1pn2/1p6/2pP4/2N1PN2/1PB1QPPP/2B2RK1 w k - 0 1"},
    {10, "4kb1r/1b1n1ppp/q3pn2/1B1P4/1pp1P3/2N2N2/1P2QPPP/2B2RK1 b k - 0 1"},
    {11, "4kr2/1b1nb1pp/4Q3/q5N1/4P3/2p5/1P3PPP/2B2RK1 w - - 0 1"},
    {11, "4k3/1b1nbrpN/4Q3/q7/4P3/8/1B3PPP/5RK1 w - - 0 1"},
    {15, "8/2r3p1/3kb3/6R1/4P2P/5P2/5K2/8 w - - 0 1"},
    {12, "r2q1rk1/pb1p2pp/1pn1p3/2b2p1n/2P2B2/P1NBPN2/1PQ2PPP/3RK2R w K - 0 1"},
    {11, "r4rk1/pb1pq1p1/1pn1p2p/5p1n/2P4P/P1NBPN2/1PQ2PP1/3R1RK1 b - - 0 1"},
    {11, "1r3r2/nb1pq2k/1p2pnpp/pP3p2/N1P4P/P3PN2/2Q1BPP1/3RR1K1 w - - 0 1"},
    {13, "1r3r2/3N3k/4pnpp/pn3p2/7P/P3PP2/4BP2/3RR1K1 b - - 0 1"},
    {15, "1r5k/3R4/4B1pp/p4p2/7P/n3PP2/5P2/6K1 w - - 0 1"},
    {11, "r1bq1k1r/ppp2pbp/2n2np1/4Q1B1/2P5/2N2N2/PP3PPP/R3KB1R w KQ - 0 1"},
    {11, "r1bq2kr/ppp2pbp/2n2np1/2Q3B1/2P5/2N2N2/PP2BPPP/R3K2R b KQ - 0 1"},
    {10, "r2q2kr/ppp2pb1/2n2npp/2Q5/2P2Bb1/2N2N2/PP2BPPP/3RK2R b K - 0 1"},
    {11, "r2q2kr/pppn1p2/2n3pp/8/2P2Bb1/1Qb2N2/PP2BPPP/3R1K1R w - - 0 1"},
    {12, "r6r/pp3pk1/4bnpp/4N3/1nP5/5B1P/PP3PPB/4R1KR b - - 0 1"},
    {12, "4r2r/p4p2/1p2bkpp/8/2P5/1P3B1P/P1n2PPB/1R4KR w - - 0 1"},
    {10, "4r2r/p2R1pk1/1p4p1/7p/2P1bB2/1P5P/P1n2PP1/3B2KR b - - 0 1"},
    {12, "3r1k2/5p2/4b1p1/2P1B2p/pP6/7P/P4PPK/4R3 w - - 0 1"},
    {11, "r2q1rk1/pp1bppbp/2np1np1/8/3NP3/2N1B2P/PPP1BPP1/R2Q1RK1 w - - 0 1"},
    {11, "r2q1rk1/1p2ppbp/2npbnp1/p7/2N1P3/2N1B2P/PPP1BPP1/R2Q1RK1 b - - 0 1"},
    {10, "r2q2k1/1p2p1bp/2npb1p1/p1n2r2/2N5/2N1BP1P/PPPQB1P1/R4RK1 w - - 0 1"},
    {10, "r2q1rk1/1p2p1bp/2npb1p1/2n5/p1N3P1/2N1BP1P/PPPQB1K1/R4R2 b - - 0 1"},
    {12, "r3kbnr/1pp2ppp/p7/2p5/4P1b1/2N5/PPP1NPPP/R1B1K2R b KQkq - 0 1"},
    {12, "2k3nr/1pp3pp/p1br1p2/2p5/4PN2/2N2P2/PPP3PP/3RK2R b K - 0 1"},
    {13, "5r2/1p1k2pp/p1bp4/2pN4/4P3/2N3K1/PPP2nPP/4R3 w - - 0 1"},
    {15, "8/1p4pp/p1bp4/2p1k3/4P1K1/2N2N2/PPPR2PP/5r1n b - - 0 1"},
    {15, "8/1p1k2p1/3p3p/p1pP1K2/7P/P1P2N2/1P1R2P1/1r5n b - - 0 1"},
    {11, "rn2k2r/pp2bppp/1qp1pn2/3p1b2/3P1B2/4PN2/PPP1BPPP/RNQ1K2R w KQkq - 0 1"},
    {11, "r4rk1/pp1nbppp/1qp1pn2/3p1b2/3P1B2/2N1P3/PPPNBPPP/R1Q2RK1 b - - 0 1"},
    {10, "r3r1k1/pp1n1ppp/2q1pn2/3p1b2/2pP1B2/P1P1P3/1QPNBPPP/R4RK1 w - - 0 1"},
    {12, "r5k1/pp2rppp/1n2pn2/3p1b2/1RpP1B2/P1P1P3/2PNBPPP/5RK1 b - - 0 1"},
    {12, "r5k1/pp2r1pp/1n2pp2/1R6/2pPpB2/P1PbP3/3N1PPP/2R3K1 w - - 0 1"},
    {13, "3r2k1/1p2r1pp/pn2pp2/R7/2pPp3/P1PbPPB1/3N2PP/2R3K1 b - - 0 1"},
    {13, "4k3/1p4pp/pr6/3p1pB1/n1pP4/P1PbPP2/3N1K1P/2R5 w - - 0 1"},
    {12, "r1bq1rk1/ppp2pbp/n2p2p1/3Pp2n/2P1P3/2N2NP1/PP2BP1P/R1BQ1RK1 b - - 0 1"},
    {11, "r4rk1/pppq2bp/n2p1pp1/3Pp3/2P1P1nN/2N3Pb/PP1BBP1P/R2QR1K1 w - - 0 1"},
    {10, "r4rk1/pppq2bp/n2p1p2/3Pp1p1/2P1P1n1/2N3Pb/PPQBBPNP/R3R1K1 b - - 0 1"},
    {11, "r1q3k1/ppp1r1bp/5p1n/1BpPp1p1/4P3/4N1Pb/PPQB1P1P/R3R1K1 w - - 0 1"},
    {11, "r5k1/p1pq1r1p/1p3p2/1BbPp1p1/4P1b1/1R4P1/PPQB1P1P/R5K1 b - - 0 1"},
    {10, "r5k1/p1p2r1p/1pB2q2/2bPpbp1/2Q5/1R3PP1/PP1B2KP/R7 b - - 0 1"},
    {11, "5rk1/p1p2r1p/1pB3q1/3Pp3/3b2P1/2R2P2/bP1BQ2P/2R4K b - - 0 1"},
    {13, "6k1/2p4p/1pB5/p2PR3/6P1/2B2rK1/bP5P/5r2 w - - 0 1"},
};
// clang-format on

}  // namespace valku
