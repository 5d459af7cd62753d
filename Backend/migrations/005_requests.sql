-- Which requests the policies let through, as a list of what is allowed. What is not on it is refused before it
-- has read a row.

-- Whether the request is a POST to this table, which only upserts. The path stands as it was sent, with or
-- without the prefix that a proxy may have cut off, and nothing else is the same path.
CREATE FUNCTION fernhollow.is_upsert(to_table text) RETURNS boolean
    LANGUAGE sql
    STABLE
AS $$
    SELECT current_setting('request.method', true) = 'POST'
        AND current_setting('request.path', true) IN ('/' || to_table, '/rest/v1/' || to_table)
$$;

-- Whether a statement is the one that PostgREST makes of
--     GET /device_day_counts?customer_email=eq.…&device_id=eq.…&day=eq.…&select=count
-- with the three conditions in any order, and with the limit that db-max-rows adds. Such a statement reads a row
-- whose whole key the client knows. Any other form reads nothing.
--
-- Policies alone could not see to that: operators like < on texts leak nothing, so PostgreSQL asks them before
-- the policy, and whether a row was found would tell one address after the other. PostgREST passes no query on to
-- the database, so the statement is all that there is to judge. Its values are parameters; names are quoted.
CREATE FUNCTION fernhollow.names_one_row(statement text) RETURNS boolean
    LANGUAGE plpgsql
    IMMUTABLE STRICT
AS $$
DECLARE
    beginning constant text := 'WITHpgrst_sourceAS(SELECTt."count"FROMtWHERE';
    -- Without the table's name, blanks, and the numbers of parameters. A regular expression costs a millisecond.
    source constant text := translate(replace(split_part(statement, ')', 1), '"public"."device_day_counts"', 't'),
                                      ' 0123456789', '');
    conditions constant text[] := string_to_array(split_part(substr(source, length(beginning) + 1), 'LIMIT', 1), 'AND');
BEGIN
    RETURN starts_with(source, beginning) AND cardinality(conditions) = 3
        AND conditions @> ARRAY['t."customer_email"=$', 't."device_id"=$', 't."day"=$']
        AND split_part(source, 'LIMIT', 2) IN ('', '$OFFSET$', 'ALLOFFSET$');
END
$$;

-- True, or an error. The policies ask it in two ways, so that a request that is not allowed ends before it has read
-- anything. PostgreSQL may ask conditions of a request before those of a policy (see above), and on a row that
-- these leave out it does not ask the policy at all. So this condition claims to be the cheapest one, and is the
-- first to be asked of the first row that a scan meets; and first_account makes it a bound of the index, which is
-- worked out before the scan. The planner asks for the bound too, so that EXPLAIN is refused like the statement.
CREATE FUNCTION fernhollow.is_allowed(on_table text) RETURNS boolean
    LANGUAGE plpgsql
    STABLE
    COST 0.0001
AS $$
BEGIN
    IF fernhollow.is_upsert(on_table) THEN
        RETURN true;
    END IF;
    IF on_table = 'device_day_counts' AND current_setting('request.method', true) = 'GET'
        AND current_setting('request.path', true) IN ('/device_day_counts', '/rest/v1/device_day_counts')
        AND fernhollow.names_one_row(current_query()) THEN
        RETURN true;
    END IF;
    RAISE insufficient_privilege USING
        MESSAGE = 'this request is not served',
        HINT = 'A GET selects count of device_day_counts by customer_email, device_id and day, each with eq.';
END
$$;
CREATE FUNCTION fernhollow.first_account(on_table text) RETURNS text
    LANGUAGE sql
    STABLE
AS $$
    SELECT CASE WHEN fernhollow.is_allowed(on_table) THEN '' END
$$;

-- PostgREST calls it at the beginning of each request where `db-pre-request` names it. The policies refuse the
-- same without it; with it a function of the project that is none of ours is refused too, and a request that is
-- served has a time-out.
CREATE FUNCTION fernhollow.check_request() RETURNS void
    LANGUAGE plpgsql
    VOLATILE
AS $$
DECLARE
    request constant text := concat(current_setting('request.method', true), ' ',
        regexp_replace(current_setting('request.path', true), '^/rest/v1/', '/'));
    preference constant text := nullif(current_setting('request.headers', true), '')::json ->> 'prefer';
BEGIN
    IF current_user <> 'anon' THEN
        RETURN; -- the operator's own key
    END IF;
    IF request NOT IN ('GET /device_day_counts', 'POST /device_day_counts', 'POST /device_hour_counts',
        'POST /device_app_hour_counts', 'POST /device_app_registry', 'POST /devices',
        'POST /rpc/get_account_today_total', 'POST /rpc/get_account_daily_totals',
        'POST /rpc/get_account_hourly_totals', 'POST /rpc/get_account_app_hourly_totals',
        'POST /rpc/get_account_app_daily_totals', 'POST /rpc/get_account_devices')
        OR preference !~ '^((resolution=merge-duplicates|return=minimal)[, ]*)*$' THEN
        RAISE insufficient_privilege USING MESSAGE = 'this request is not served';
    END IF;
    -- Of the statement that follows. The longest request of a large account takes some hundredths of a second.
    PERFORM set_config('statement_timeout', '2s', true);
END
$$;

REVOKE ALL ON FUNCTION fernhollow.is_upsert(text), fernhollow.names_one_row(text), fernhollow.is_allowed(text),
    fernhollow.first_account(text), fernhollow.check_request() FROM PUBLIC;
GRANT EXECUTE ON FUNCTION fernhollow.is_upsert(text), fernhollow.names_one_row(text), fernhollow.is_allowed(text),
    fernhollow.first_account(text) TO anon;
-- PostgREST calls it as whatever role a request has.
GRANT USAGE ON SCHEMA fernhollow TO PUBLIC;
GRANT EXECUTE ON FUNCTION fernhollow.check_request() TO PUBLIC;

DO $$
DECLARE
    name text;
    policy text;
BEGIN
    FOREACH name IN ARRAY ARRAY['device_day_counts', 'device_hour_counts', 'device_app_hour_counts',
                                'device_app_registry', 'devices'] LOOP
        EXECUTE format('ALTER POLICY upsert_inserts ON public.%I WITH CHECK (fernhollow.is_allowed(%L))', name, name);
        FOREACH policy IN ARRAY ARRAY['upsert_updates',
            CASE name WHEN 'device_day_counts' THEN 'upsert_or_select_sees' ELSE 'upsert_sees' END] LOOP
            EXECUTE format('ALTER POLICY %I ON public.%I USING (fernhollow.is_allowed(%L)
                            AND customer_email >= fernhollow.first_account(%L))', policy, name, name, name);
        END LOOP;
    END LOOP;
END
$$;

DROP FUNCTION fernhollow.is_upsert();
DROP FUNCTION fernhollow.only_row_of_request();
DROP FUNCTION fernhollow.refuse_second_row();
