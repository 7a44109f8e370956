#include "apps/cli/watch/prompts.h"

#include "apps/cli/application.h"
#include "apps/cli/health.h"
#include "core/utf8.h"
#include "engagement/app_update_manager.h"
#include "engagement/rate_us_manager.h"
#include "insights/monthly_recap.h"
#include "insights/monthly_recap_manager.h"

#include <utility>

namespace pedvar {
namespace {

constexpr const char* ratingIdentifier = "rating";
constexpr const char* updateIdentifier = "update";
constexpr const char* recapIdentifier = "recap";
constexpr const char* monthIdentifier = "month";

constexpr std::size_t longestText = 300;  // bytes; more than a notification shows

/// Calls `act` whenever the field becomes true.
template <class Act>
Subscription whenTrue(Published<bool>& field, Act act) {
    return field.observe([act](bool isTrue) {
        if (isTrue) act();
    });
}

std::string shortened(std::string_view text) {
    if (text.size() <= longestText) return std::string(text);
    std::size_t length = longestText;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
    return std::string(text.substr(0, length)) + "…";
}

}  // namespace

Prompts::Prompts(Application& application, RateUsManager& rating, AppUpdateManager& updates,
                 MonthlyRecapManager& recap, UserNotifications& notifications)
    : application_(application),
      rating_(rating),
      updates_(updates),
      recap_(recap),
      notifications_(notifications),
      ratingShown_(whenTrue(rating.shouldShowPopup, [this] { showRating(); })),
      updateShown_(whenTrue(updates.shouldShowUpdatePopup, [this] { showUpdate(); })),
      recapShown_(whenTrue(recap.shouldShowPopup, [this] { showRecap(); })),
      responses_(notifications.observeResponses([this](const NotificationResponse& given) { take(given); })),
      tasks_(application.loop()) {}

void Prompts::offerAgain() {
    rating_.shouldShowPopup = false;
    updates_.shouldShowUpdatePopup = false;
    recap_.shouldShowPopup = false;
    withheld_.clear();
}

void Prompts::offerWithheld() {
    const auto withheld = std::exchange(withheld_, {});
    if (withheld.contains(ratingIdentifier)) rating_.shouldShowPopup = true;
    if (withheld.contains(updateIdentifier)) updates_.recallLastCheck();  // it may have been dismissed meanwhile
    // The recap is offered by each refresh.
}

void Prompts::show(UserNotification notification, Published<bool>& offered) {
    const auto withhold = [this, &offered, identifier = notification.identifier] {
        offered = false;
        withheld_.insert(identifier);
    };
    if (!application_.settings().preferences().notificationsEnabled) return withhold();
    notifications_.show(std::move(notification), [withhold](const auto& shown) {
        if (!shown) withhold();
    });
}

void Prompts::showRating() {
    const Texts& text = application_.text();
    show({ratingIdentifier,
          text("Do you like Pedvar?"),
          text("A rating helps others to find it."),
          {{"rate", text("Rate")}, {"later", text("Later")}}},
         rating_.shouldShowPopup);
}

void Prompts::showUpdate() {
    const Texts& text = application_.text();
    std::vector<NotificationAction> actions{{"dismiss", text("Dismiss")}};
    if (!application_.linuxSettings().updatePage.text().empty()) {
        actions.insert(actions.begin(), {"view", text("View")});
    }
    show({updateIdentifier, text("Pedvar {} is there", shortened(harmless(updates_.latestVersion.value()))),
          shortened(harmlessLines(updates_.releaseNotes.value())), std::move(actions)},
         updates_.shouldShowUpdatePopup);
}

void Prompts::showRecap() {
    const Texts& text = application_.text();
    show({recapIdentifier,
          text("Your month: {}", recap_.monthName().in(application_.catalogue())),
          text("It is over. What was it like?"),
          {{"view", text("View")}, {"dismiss", text("Dismiss")}}},
         recap_.shouldShowPopup);
}

void Prompts::take(const NotificationResponse& response) {
    using Kind = NotificationResponse::Kind;
    if (response.kind == Kind::gone) return;
    const bool isDismissal = response.kind == Kind::dismissed || response.action == "dismiss";
    if (response.identifier == ratingIdentifier) {
        if (response.action == "rate") {
            rating_.rateNow();
        } else {
            rating_.maybeLater();
        }
    } else if (response.identifier == updateIdentifier) {
        if (isDismissal) {
            updates_.dismissUpdate();
        } else {
            updates_.shouldShowUpdatePopup = false;
            updates_.openStorePage();
        }
    } else if (response.identifier == recapIdentifier) {
        if (isDismissal) {
            recap_.dismissRecap();
        } else {
            recap_.viewRecap();
            tasks_.spawn(showMonth());
        }
    }
}

Task<> Prompts::showMonth() {
    const auto health = application_.health();
    const auto wanted = recap_.pendingRecapMonth.value();
    if (!health || !wanted) co_return;
    recap_.pendingTrendsMonthNavigation = false;
    const Calendar calendar = application_.calendar();
    const GoalHistory goals = application_.settings().goalHistory();
    const auto shown = month(calendar.day(*wanted));
    const MonthlyRecap recap =
        co_await fetchMonthlyRecap((*health)->manager.reads(), shown, calendar, goals, application_.today());
    const Screen screen = application_.screen();
    const std::string best = recap.bestDay ? screen.figures.steps(recap.bestDay->steps) : screen.text("none");
    UserNotification notification{
        monthIdentifier,
        screen.text("Your month: {}", monthName(shown, application_.today()).in(application_.catalogue())),
        screen.text("Steps: {0}, on average {1} a day. Best day: {2}. Goal met on {3}.",
                    screen.figures.number(recap.totalSteps), screen.figures.number(recap.averageSteps, 0), best,
                    screen.figures.days(recap.goalDays))};
    notifications_.show(std::move(notification), [](const auto&) {});
}

}  // namespace pedvar
